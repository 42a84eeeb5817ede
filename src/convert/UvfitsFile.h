// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/MappedFile.h"
#include "core/Status.h"

namespace lumo {

/// A FITS file with visibilities, open for reading: header cards and tables through cfitsio, the groups
/// through a memory map.
///
/// Cards and columns are those of the current HDU; open() leaves the primary one current. A file that is not
/// plain FITS (compressed, or of another format) is not opened. Nothing is allocated from a size that a card
/// claims before that size is known to lie inside the file.
class UvfitsFile {
 public:
  /// An extension of the file.
  struct Extension {
    std::string name;  ///< EXTNAME, "" when it has none
    int hdu = 0;       ///< cfitsio's number, the primary HDU being 1
  };

  UvfitsFile();
  UvfitsFile(const UvfitsFile&) = delete;
  UvfitsFile& operator=(const UvfitsFile&) = delete;
  ~UvfitsFile();

  [[nodiscard]] Status open(const std::string& name);
  [[nodiscard]] const MappedFile& map() const { return map_; }
  /// Offset of the primary HDU's first data byte.
  [[nodiscard]] std::uint64_t dataOffset() const { return dataOffset_; }
  /// The extensions in file order; those behind a damaged header are missing.
  [[nodiscard]] const std::vector<Extension>& extensions() const { return extensions_; }
  /// True when there are more extensions than extensions() lists, but the next one's header is damaged.
  [[nodiscard]] bool extensionsDamaged() const { return extensionsDamaged_; }
  /// All extensions of a name ("AIPS AN"), in file order.
  [[nodiscard]] std::vector<Extension> extensionsNamed(const std::string& name) const;
  [[nodiscard]] Status moveTo(int hdu);

  /// A card's text without quotes and trailing blanks, "" when there is none.
  [[nodiscard]] std::string text(const std::string& card) const;
  /// True when the card is there and holds T.
  [[nodiscard]] bool logical(const std::string& card) const;
  /// A card's number; empty when there is no card. Fails when it holds something else or is not finite.
  [[nodiscard]] Status number(const std::string& card, std::optional<double>& value) const;
  /// The same with a value to take when there is no card.
  [[nodiscard]] Status number(const std::string& card, double fallback, double& value) const;
  /// A card that must hold a whole number within [minimum, maximum].
  [[nodiscard]] Status whole(const std::string& card, std::int64_t minimum, std::int64_t maximum,
                             std::int64_t& value) const;
  /// The texts of the primary header's HISTORY cards, at most `maximum`; `cut` tells whether there were more.
  [[nodiscard]] std::vector<std::string> history(std::size_t maximum, bool& cut) const;

  /// Rows of the current table. Fails when it is no binary table or its data does not lie inside the file.
  [[nodiscard]] Status tableRows(std::uint64_t& rows) const;
  [[nodiscard]] bool hasColumn(const std::string& column) const;
  /// The first `count` numbers of a cell; rows count from 0. Fails when the cell holds fewer.
  [[nodiscard]] Status cell(const std::string& column, std::uint64_t row, std::size_t count,
                            std::vector<double>& values) const;
  /// A text cell as it stands, up to its first NUL.
  [[nodiscard]] Status cellText(const std::string& column, std::uint64_t row, std::string& value) const;

 private:
  struct Handle;

  [[nodiscard]] Status openFits();
  /// What a failure calls a column. Walks through the header: not for every cell.
  [[nodiscard]] std::string placeOf(const std::string& column) const;
  void listExtensions();

  std::string name_;
  MappedFile map_;
  std::unique_ptr<Handle> handle_;
  std::uint64_t headerOffset_ = 0;
  std::uint64_t dataOffset_ = 0;
  std::vector<Extension> extensions_;
  bool extensionsDamaged_ = false;
};

/// True for a file that starts like plain FITS. Whether it holds visibilities, and in a form that can be
/// imported, is for importUvfits to say.
[[nodiscard]] bool looksLikeUvfits(const std::string& path);

/// Text from a file made presentable: cut at the first NUL, other bytes than printable ASCII turned into '?',
/// blanks at both ends removed, at most `maximum` bytes.
[[nodiscard]] std::string cleanText(const std::string& raw, std::size_t maximum);

}  // namespace lumo
