// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "imaging/MakeParametersModel.h"

class QGridLayout;
class QLabel;

namespace lumo {

/// The sheet of the imaging parameters. It ends with OK only when gridding can use every field; otherwise it
/// says why and leads to the field.
class AMakeParDlg final : public QDialog {
  Q_OBJECT

 public:
  explicit AMakeParDlg(QWidget* parent = nullptr);

  /// Shows a block.
  void SetParameters(const ABMakeParameters& block);
  /// The block last shown, or after Accepted the one the user made of it.
  [[nodiscard]] const ABMakeParameters& parameters() const { return block_; }

 public slots:
  void accept() override;

 private:
  struct Choice {
    const char* text;
    std::int32_t value;
  };

  [[nodiscard]] QWidget* makeGridGroup();
  [[nodiscard]] QWidget* makeMapGroup();
  [[nodiscard]] QWidget* makeExtentGroup();
  [[nodiscard]] QWidget* makeWeightingGroup();
  [[nodiscard]] QWidget* makeKernelGroup();
  [[nodiscard]] QWidget* makeTaperGroup();
  void addRow(QGridLayout& layout, const QString& label, std::initializer_list<MakeField> fields);
  void addExtentRow(QGridLayout& layout, const QString& label, const char* name, QLabel*& x, QLabel*& y);
  [[nodiscard]] QWidget* makeEditor(MakeField field);
  [[nodiscard]] QWidget* makeLine(MakeField field);
  [[nodiscard]] QWidget* makeCombo(MakeField field, const std::vector<Choice>& choices);
  [[nodiscard]] QWidget* makeSizeCombo(MakeField field, const std::vector<std::int32_t>& sizes);
  [[nodiscard]] QWidget* makeCheck(MakeField field);

  void edited(MakeField field, const QString& text);
  void showText(MakeField field);
  void showDependents();
  void leadTo(MakeField field);
  [[nodiscard]] QWidget* editor(MakeField field) const;

  ABMakeParameters block_;
  MakeParametersModel model_;
  std::array<QWidget*, kMakeFieldCount> editors_{};
  QLabel* gridX_ = nullptr;
  QLabel* gridY_ = nullptr;
  QLabel* cellX_ = nullptr;
  QLabel* cellY_ = nullptr;
  QLabel* fieldX_ = nullptr;
  QLabel* fieldY_ = nullptr;
};

}  // namespace lumo
