// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/ABitArray.h"
#include "io/AStokesMix.h"
#include "io/UvxWriter.h"
#include "io/VisibilityInputs.h"
#include "support/TempFolder.h"

namespace lumo::test {

/// One visibility file of an imaging test, in memory: what is written to disk for the code under test and
/// what the oracles read.
struct TestFile {
  struct Group {
    UvxRecord record;
    std::vector<AUVXComplex> values;  ///< [ifs][channels][products]
  };

  /// One source (ID 1, calibrated), one stored product I, one selection (ID 1) whose IFs have the given
  /// frequencies.
  explicit TestFile(const std::vector<double>& frequencies, std::uint32_t channels = 1);

  /// Adds a selection with as many IFs as the file has.
  void addSelection(std::int32_t id, const std::vector<double>& frequencies);
  /// Stores right and left hand instead of I, and images their mean.
  void storeHands();
  /// Adds a group of the first selection and the source; u and v in seconds.
  Group& add(double u, double v, std::vector<AUVXComplex> values);

  /// Selection mask with every bit set.
  [[nodiscard]] ABitArray all() const;

  UvxContent content;
  std::vector<Group> groups;
  AStokesMix mix{StokesQuantity::kI, 0};
  std::int32_t source = 1;
  ABitArray used;  ///< frequency selections that a run uses; set by the constructor and addSelection to all
};

void writeTestFile(const TestFile& file, const std::string& path);
/// Writes the files into the folder as "0.uvx", "1.uvx", ... and lists them.
[[nodiscard]] VisibilityInputs listTestFiles(const TempFolder& folder, const std::vector<TestFile>& files);

}  // namespace lumo::test
