// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/UvfitsFile.h"

#include <fitsio.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

#include "core/TextForm.h"
#include "io/FitsCards.h"
#include "io/FitsFile.h"

namespace lumo {
namespace {

constexpr char kFirstCard[] = "SIMPLE  =";
constexpr std::size_t kCardBytes = 80;
constexpr int kMaxExtensions = 1000;
// A cell of this many bytes holds any name; what is longer is damage.
constexpr LONGLONG kMaxTextCell = 4096;

/// Turns a cfitsio status into a sentence and empties cfitsio's message stack.
Status fitsFailure(int code, const std::string& what) {
  char reason[FLEN_STATUS] = "";
  fits_get_errstatus(code, reason);
  fits_clear_errmsg();
  return {StatusCode::kBadFormat, what + " (" + reason + ")"};
}

bool startsLikeFits(const MappedFile& map) {
  return map.size() >= kCardBytes && std::memcmp(map.data(), kFirstCard, sizeof kFirstCard - 1) == 0;
}

bool isExtension(const MappedFile& map, std::uint64_t at) {
  static constexpr char kExtension[] = "XTENSION";
  return at + kCardBytes <= map.size() &&
         std::memcmp(map.data() + at, kExtension, sizeof kExtension - 1) == 0;
}

/// The card at `at`, empty beyond the end of the file.
std::string_view cardAt(const MappedFile& map, std::uint64_t at) {
  if (at + kCardBytes > map.size()) return {};
  return {reinterpret_cast<const char*>(map.data() + at), kCardBytes};
}

/// A card that must come next in a table's header, and the whole numbers it may hold.
struct TableCard {
  std::string_view name;
  std::int64_t minimum;
  std::int64_t maximum;

  [[nodiscard]] bool matches(std::string_view card) const {
    const std::string_view found = card.substr(0, 8);
    if (card.size() != kCardBytes || !found.starts_with(name) || card.substr(8, 2) != "= ") return false;
    if (found.find_first_not_of(' ', name.size()) != std::string_view::npos) return false;
    card.remove_prefix(10);
    const std::string_view text = card.substr(0, card.find('/'));
    const auto first = text.find_first_not_of(' ');
    const auto last = text.find_last_not_of(' ');
    std::int64_t value = 0;
    return first != std::string_view::npos && parseInt(text.substr(first, last - first + 1), value) &&
           value >= minimum && value <= maximum;
  }
};

/// Fails when a card of the header at `at` holds more than cfitsio has room for, or END is missing. The name
/// of a column may fill its card but for the quotes.
Status checkCards(const MappedFile& map, std::uint64_t at) {
  for (std::string_view card = cardAt(map, at); !card.starts_with("END ");
       card = cardAt(map, at += kCardBytes)) {
    if (card.empty()) return {StatusCode::kBadFormat, "the file ends inside a header"};
    const std::string_view value = cardValue(card);
    if (!valueFits(card) || (card.starts_with("TTYPE") && !value.empty() && value.front() != '\''))
      return {StatusCode::kBadFormat,
              "a line of a header is no FITS card: " + cleanText(std::string(card), kCardBytes)};
  }
  return {};
}

/// False when the extension at `at` is a table whose header does not start as FITS demands. cfitsio takes
/// memory for as many columns as TFIELDS says before it looks whether they are there, and for a random number
/// of them when one of these cards is illegible.
bool tableStartIsSane(const MappedFile& map, std::uint64_t at) {
  constexpr std::int64_t kMany = std::int64_t{1} << 53;
  constexpr TableCard kCards[] = {{"BITPIX", 8, 8},     {"NAXIS", 2, 2},      {"NAXIS1", 0, kMany},
                                  {"NAXIS2", 0, kMany}, {"PCOUNT", 0, kMany}, {"GCOUNT", 1, 1},
                                  {"TFIELDS", 0, 999}};
  if (cardAt(map, at).find("TABLE") == std::string_view::npos) return true;
  for (const TableCard& expected : kCards) {
    at += kCardBytes;
    if (!expected.matches(cardAt(map, at))) return false;
  }
  return true;
}

}  // namespace

struct UvfitsFile::Handle {
  fitsfile* fits = nullptr;

  Handle() = default;
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() {
    int status = 0;
    if (fits != nullptr) fits_close_file(fits, &status);
    fits_clear_errmsg();
  }
};

UvfitsFile::UvfitsFile() = default;
UvfitsFile::~UvfitsFile() = default;

Status UvfitsFile::open(const std::string& name) {
  name_ = name;
  extensions_.clear();
  extensionsDamaged_ = false;
  handle_ = std::make_unique<Handle>();
  if (Status status = map_.open(name); !status.ok()) return status;
  // cfitsio would unpack a compressed file into memory, whatever its size.
  if (!startsLikeFits(map_))
    return {StatusCode::kBadFormat, "is not a FITS file: it does not start with the card SIMPLE", name};
  return openFits().about(name);
}

Status UvfitsFile::openFits() {
  if (Status status = checkCards(map_, 0); !status.ok()) return status;
  int code = 0;
  if (fits_open_diskfile(&handle_->fits, literalFitsPath(name_).c_str(), READONLY, &code) != 0) {
    handle_->fits = nullptr;
    return fitsFailure(code, "the primary header cannot be read");
  }
  LONGLONG header = 0;
  LONGLONG data = 0;
  LONGLONG end = 0;
  if (fits_get_hduaddrll(handle_->fits, &header, &data, &end, &code) != 0)
    return fitsFailure(code, "the primary header cannot be read");
  if (header < 0 || data < header || static_cast<std::uint64_t>(data) > map_.size())
    return {StatusCode::kBadFormat, "the file ends inside its primary header"};
  headerOffset_ = static_cast<std::uint64_t>(header);
  dataOffset_ = static_cast<std::uint64_t>(data);
  listExtensions();
  return moveTo(1);
}

void UvfitsFile::listExtensions() {
  for (int hdu = 2; hdu < kMaxExtensions; ++hdu) {
    int code = 0;
    LONGLONG end = 0;
    if (fits_get_hduaddrll(handle_->fits, nullptr, nullptr, &end, &code) != 0 || end < 0) break;
    const auto start = static_cast<std::uint64_t>(end);
    extensionsDamaged_ = isExtension(map_, start);
    if (!extensionsDamaged_ || !checkCards(map_, start).ok() || !tableStartIsSane(map_, start)) break;
    if (fits_movabs_hdu(handle_->fits, hdu, nullptr, &code) != 0) break;
    extensionsDamaged_ = false;
    extensions_.push_back({text("EXTNAME"), hdu});
  }
  fits_clear_errmsg();
}

std::vector<UvfitsFile::Extension> UvfitsFile::extensionsNamed(const std::string& name) const {
  std::vector<Extension> found;
  std::copy_if(extensions_.begin(), extensions_.end(), std::back_inserter(found),
               [&](const Extension& extension) { return extension.name == name; });
  return found;
}

Status UvfitsFile::moveTo(int hdu) {
  int code = 0;
  if (fits_movabs_hdu(handle_->fits, hdu, nullptr, &code) != 0)
    return fitsFailure(code, "HDU " + toStr(hdu) + " cannot be read");
  return {};
}

std::string UvfitsFile::text(const std::string& card) const {
  int code = 0;
  char value[FLEN_VALUE] = "";
  // cfitsio searches from where it stands; of two cards with one name the first counts.
  fits_movabs_key(handle_->fits, 1, &code);
  if (fits_read_key(handle_->fits, TSTRING, card.c_str(), value, nullptr, &code) != 0) {
    fits_clear_errmsg();
    return {};
  }
  return cleanText(value, sizeof value);
}

bool UvfitsFile::logical(const std::string& card) const {
  int code = 0;
  int value = 0;
  fits_movabs_key(handle_->fits, 1, &code);
  fits_read_key(handle_->fits, TLOGICAL, card.c_str(), &value, nullptr, &code);
  fits_clear_errmsg();
  return code == 0 && value != 0;
}

Status UvfitsFile::number(const std::string& card, std::optional<double>& value) const {
  value.reset();
  int code = 0;
  double found = 0;
  fits_movabs_key(handle_->fits, 1, &code);
  fits_read_key(handle_->fits, TDOUBLE, card.c_str(), &found, nullptr, &code);
  fits_clear_errmsg();
  if (code == KEY_NO_EXIST || code == VALUE_UNDEFINED) return {};
  if (code != 0 || !std::isfinite(found))
    return {StatusCode::kBadFormat,
            "card " + card + " holds '" + text(card) + "' where a number was expected", name_};
  value = found;
  return {};
}

Status UvfitsFile::number(const std::string& card, double fallback, double& value) const {
  std::optional<double> found;
  Status status = number(card, found);
  value = found.value_or(fallback);
  return status;
}

Status UvfitsFile::whole(const std::string& card, std::int64_t minimum, std::int64_t maximum,
                         std::int64_t& value) const {
  std::optional<double> found;
  if (Status status = number(card, found); !status.ok()) return status;
  const std::string range = "a whole number from " + toStr(minimum) + " to " + toStr(maximum);
  if (!found) return {StatusCode::kBadFormat, "has no card " + card + "; expected " + range, name_};
  if (*found != std::floor(*found) || *found < static_cast<double>(minimum) ||
      *found > static_cast<double>(maximum))
    return {StatusCode::kBadFormat, "card " + card + " is " + valToStr(*found) + "; expected " + range,
            name_};
  value = static_cast<std::int64_t>(*found);
  return {};
}

std::vector<std::string> UvfitsFile::history(std::size_t maximum, bool& cut) const {
  static constexpr char kHistory[] = "HISTORY ";
  static constexpr std::size_t kNameBytes = sizeof kHistory - 1;
  std::vector<std::string> lines;
  cut = false;
  for (std::uint64_t at = headerOffset_; at + kCardBytes <= dataOffset_; at += kCardBytes) {
    const char* const card = reinterpret_cast<const char*>(map_.data() + at);
    if (std::memcmp(card, kHistory, kNameBytes) != 0) continue;
    if (lines.size() == maximum) {
      cut = true;
      break;
    }
    lines.push_back(cleanText(std::string(card + kNameBytes, kCardBytes - kNameBytes), kCardBytes));
  }
  return lines;
}

Status UvfitsFile::tableRows(std::uint64_t& rows) const {
  int code = 0;
  int type = 0;
  LONGLONG header = 0;
  LONGLONG data = 0;
  LONGLONG end = 0;
  LONGLONG count = 0;
  fits_get_hdu_type(handle_->fits, &type, &code);
  fits_get_hduaddrll(handle_->fits, &header, &data, &end, &code);
  if (code != 0 || type != BINARY_TBL) {
    fits_clear_errmsg();
    return {StatusCode::kBadFormat, "table " + text("EXTNAME") + " is not a binary table", name_};
  }
  std::int64_t width = 0;
  if (Status status = whole("NAXIS1", 0, std::int64_t{1} << 31, width); !status.ok()) return status;
  fits_get_num_rowsll(handle_->fits, &count, &code);
  const std::uint64_t space = data >= 0 && static_cast<std::uint64_t>(data) <= map_.size()
                                  ? map_.size() - static_cast<std::uint64_t>(data)
                                  : 0;
  const auto bytes = static_cast<std::uint64_t>(width);
  if (code != 0 || count < 0 || (count > 0 && bytes == 0) ||
      (bytes != 0 && static_cast<std::uint64_t>(count) > space / bytes)) {
    fits_clear_errmsg();
    return {StatusCode::kBadFormat,
            "table " + text("EXTNAME") + " claims " + toStr(count) + " rows of " + toStr(width) +
                " bytes; the file ends before them",
            name_};
  }
  rows = static_cast<std::uint64_t>(count);
  return {};
}

bool UvfitsFile::hasColumn(const std::string& column) const {
  int code = 0;
  int index = 0;
  fits_get_colnum(handle_->fits, CASEINSEN, const_cast<char*>(column.c_str()), &index, &code);
  fits_clear_errmsg();
  return code == 0 || code == COL_NOT_UNIQUE;
}

std::string UvfitsFile::placeOf(const std::string& column) const {
  return "table " + text("EXTNAME") + ", column " + column;
}

Status UvfitsFile::cell(const std::string& column, std::uint64_t row, std::size_t count,
                        std::vector<double>& values) const {
  int code = 0;
  int index = 0;
  fits_get_colnum(handle_->fits, CASEINSEN, const_cast<char*>(column.c_str()), &index, &code);
  if (code == COL_NOT_UNIQUE) code = 0;
  int type = 0;
  LONGLONG repeat = 0;
  LONGLONG width = 0;
  fits_get_coltypell(handle_->fits, index, &type, &repeat, &width, &code);
  if (code != 0) return fitsFailure(code, placeOf(column) + " is missing").about(name_);
  const bool numeric = type == TBYTE || type == TSHORT || type == TLONG || type == TLONGLONG ||
                       type == TFLOAT || type == TDOUBLE;
  if (!numeric || repeat < static_cast<LONGLONG>(count))
    return {StatusCode::kBadFormat,
            placeOf(column) + " holds " + (numeric ? toStr(repeat) : std::string("no")) +
                " numbers a row; expected " + toStr(static_cast<std::int64_t>(count)),
            name_};
  values.assign(count, 0.0);
  fits_read_col(handle_->fits, TDOUBLE, index, static_cast<LONGLONG>(row) + 1, 1,
                static_cast<LONGLONG>(count), nullptr, values.data(), nullptr, &code);
  if (code != 0) return fitsFailure(code, placeOf(column) + " cannot be read").about(name_);
  return {};
}

Status UvfitsFile::cellText(const std::string& column, std::uint64_t row, std::string& value) const {
  int code = 0;
  int index = 0;
  fits_get_colnum(handle_->fits, CASEINSEN, const_cast<char*>(column.c_str()), &index, &code);
  if (code == COL_NOT_UNIQUE) code = 0;
  int type = 0;
  LONGLONG repeat = 0;
  LONGLONG width = 0;
  fits_get_coltypell(handle_->fits, index, &type, &repeat, &width, &code);
  if (code != 0) return fitsFailure(code, placeOf(column) + " is missing").about(name_);
  if (type != TSTRING || repeat > kMaxTextCell || width > kMaxTextCell)
    return {StatusCode::kBadFormat, placeOf(column) + " does not hold a text", name_};
  std::vector<char> buffer(static_cast<std::size_t>(std::max(repeat, width)) + 1, '\0');
  char* cells[1] = {buffer.data()};
  char none[] = "";
  fits_read_col(handle_->fits, TSTRING, index, static_cast<LONGLONG>(row) + 1, 1, 1, none, cells, nullptr,
                &code);
  if (code != 0) return fitsFailure(code, placeOf(column) + " cannot be read").about(name_);
  value = buffer.data();
  return {};
}

bool looksLikeUvfits(const std::string& path) {
  MappedFile map;
  return map.open(path).ok() && startsLikeFits(map);
}

std::string cleanText(const std::string& raw, std::size_t maximum) {
  std::string clean = raw.substr(0, raw.find('\0'));
  for (char& c : clean)
    if (c < ' ' || c > '~') c = '?';
  const auto first = clean.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  clean = clean.substr(first, maximum);
  return clean.substr(0, clean.find_last_not_of(' ') + 1);
}

}  // namespace lumo
