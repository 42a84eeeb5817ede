// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <algorithm>
#include <string>
#include <vector>

#include "gui/GuiScript.h"
#include "imaging/ui/AMakeParDlg.h"

namespace lumo {
namespace {

using test::GuiScript;
using test::modalWindow;
using testing::ElementsAre;

class MakeParametersDialogTest : public testing::Test {
 protected:
  /// Every field with a value of its own, all valid, every choice other than the default.
  static ABMakeParameters distinctBlock() {
    ABMakeParameters p;
    p.uvLimitU = 1.25, p.uvLimitV = 1.5, p.uvScaleU = 1e5 / 3, p.uvScaleV = 2e5;
    p.shiftX = -0.75, p.shiftY = 0.1, p.halfSizeX = 512, p.halfSizeY = 128;
    p.weightingMode = kUniformWeighting, p.uniformBoxU = 0.25, p.uniformBoxV = -1;
    p.kernelWidthU = 2.5, p.kernelWidthV = 3.5, p.kernelType = kKernelHat;
    p.taperWidthU = 7e4, p.taperWidthV = 8e4, p.taperParam3 = 0.6, p.taperParam4 = 0.2;
    p.taperType = kTaperTh, p.useVisWeights = 0;
    return p;
  }

  static std::vector<std::string> texts(const ABMakeParameters& block) {
    const MakeParametersModel model(block);
    std::vector<std::string> all;
    for (std::size_t i = 0; i < kMakeFieldCount; ++i) all.push_back(model.text(static_cast<MakeField>(i)));
    return all;
  }

  template <typename Widget>
  Widget& editor(const char* name) {
    return *dialog_.findChild<Widget*>(name);
  }
  void type(const char* name, const QString& text) { editor<QLineEdit>(name).setText(text); }
  void choose(const char* name, int value) {
    auto& combo = editor<QComboBox>(name);
    combo.setCurrentIndex(combo.findData(value));
  }
  QAbstractButton& ok() { return *dialog_.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok); }
  std::string label(const char* name) { return dialog_.findChild<QLabel*>(name)->text().toStdString(); }

  /// Presses OK; returns the message that appeared, and leaves the dialog open.
  std::string messageOnOk() {
    std::string message;
    GuiScript script;
    script.step([this] { return dialog_.isVisible(); })
        .then([this] { ok().click(); })
        .step([&message] {
          auto* const box = modalWindow<QMessageBox>();
          if (box == nullptr) return false;
          message = box->text().toStdString();
          box->button(QMessageBox::Ok)->click();
          return true;
        })
        .step([] { return modalWindow<QMessageBox>() == nullptr; })
        .then([this] {
          focused_ =
              dialog_.focusWidget() == nullptr ? "" : dialog_.focusWidget()->objectName().toStdString();
          isStillOpen_ = dialog_.isVisible();
          dialog_.reject();
        });
    EXPECT_EQ(dialog_.exec(), QDialog::Rejected);
    return message;
  }

  int acceptAtOnce() {
    GuiScript script;
    script.step([this] { return dialog_.isVisible(); }).then([this] { ok().click(); });
    return dialog_.exec();
  }

  AMakeParDlg dialog_;
  std::string focused_;
  bool isStillOpen_ = false;
};

TEST_F(MakeParametersDialogTest, BlockShownAndAcceptedUntouchedComesBackUnchanged) {
  dialog_.SetParameters(distinctBlock());
  EXPECT_EQ(acceptAtOnce(), QDialog::Accepted);
  EXPECT_EQ(texts(dialog_.parameters()), texts(distinctBlock()));
}

TEST_F(MakeParametersDialogTest, ShowsTheFieldsOfTheBlock) {
  dialog_.SetParameters(distinctBlock());
  EXPECT_EQ(editor<QLineEdit>("uvScaleU").text(), "33333.333333333336");
  EXPECT_EQ(editor<QLineEdit>("shiftX").text(), "-0.75");
  EXPECT_EQ(editor<QComboBox>("halfSizeX").currentText(), "512");
  EXPECT_EQ(editor<QComboBox>("halfSizeY").currentText(), "128");
  EXPECT_EQ(editor<QComboBox>("weightingMode").currentText(), "Uniform");
  EXPECT_EQ(editor<QComboBox>("kernelType").currentText(), "Hat");
  EXPECT_EQ(editor<QComboBox>("taperType").currentText(), "Th");
  EXPECT_FALSE(editor<QCheckBox>("useVisWeights").isChecked());
}

TEST_F(MakeParametersDialogTest, EveryFieldCanBeEdited) {
  choose("weightingMode", kUniformWeighting);
  choose("kernelType", kKernelHat);
  choose("taperType", kTaperTh);
  choose("halfSizeX", 512);
  choose("halfSizeY", 128);
  editor<QCheckBox>("useVisWeights").setChecked(false);
  const MakeParametersModel wanted(distinctBlock());
  for (std::size_t i = 0; i < kMakeFieldCount; ++i) {
    const auto field = static_cast<MakeField>(i);
    if (auto* const line = dialog_.findChild<QLineEdit*>(MakeParametersModel::name(field)))
      line->setText(QString::fromStdString(wanted.text(field)));
  }
  EXPECT_EQ(acceptAtOnce(), QDialog::Accepted);
  EXPECT_EQ(texts(dialog_.parameters()), texts(distinctBlock()));
}

TEST_F(MakeParametersDialogTest, CancelLeavesTheBlockAsItWasShown) {
  dialog_.SetParameters(distinctBlock());
  type("shiftX", "12");
  GuiScript script;
  script.step([this] { return dialog_.isVisible(); }).then([this] {
    test::pressKey(dialog_, Qt::Key_Escape);
  });
  EXPECT_EQ(dialog_.exec(), QDialog::Rejected);
  EXPECT_EQ(texts(dialog_.parameters()), texts(distinctBlock()));
}

TEST_F(MakeParametersDialogTest, TextThatIsNoNumberIsNamedAndTheFieldGetsTheFocus) {
  type("shiftY", "12 mas");
  EXPECT_EQ(messageOnOk(), "Shift in y is 12 mas; expected a number.");
  EXPECT_TRUE(isStillOpen_);
  EXPECT_EQ(focused_, "shiftY");
  EXPECT_EQ(editor<QLineEdit>("shiftY").selectedText(), "12 mas");
  EXPECT_EQ(texts(dialog_.parameters()), texts(ABMakeParameters()));
}

TEST_F(MakeParametersDialogTest, ValueThatGriddingCannotUseIsNamedAndTheFieldGetsTheFocus) {
  choose("weightingMode", kUniformWeighting);
  type("uniformBoxV", "3");
  EXPECT_EQ(messageOnOk(), "Uniform box in v is 3; expected a number not above 2.");
  EXPECT_EQ(focused_, "uniformBoxV");
}

TEST_F(MakeParametersDialogTest, BadFieldThatNothingUsesOpensForTheUserToMendIt) {
  choose("kernelType", kKernelGauss);
  type("kernelWidthU", "-2");
  choose("kernelType", kKernelPillBox);
  ASSERT_FALSE(editor<QLineEdit>("kernelWidthU").isEnabled());
  EXPECT_EQ(messageOnOk(), "Kernel width in u is -2; expected a number not below 0.");
  EXPECT_EQ(focused_, "kernelWidthU");
  type("kernelWidthU", "2");
  EXPECT_TRUE(editor<QLineEdit>("kernelWidthU").isEnabled());
}

TEST_F(MakeParametersDialogTest, OnlyUsableSizesAreOffered) {
  const auto offered = [this](const char* name) {
    std::vector<int> sizes;
    for (int i = 0; i < editor<QComboBox>(name).count(); ++i)
      sizes.push_back(editor<QComboBox>(name).itemText(i).toInt());
    return sizes;
  };
  EXPECT_THAT(offered("halfSizeX"), ElementsAre(2, 4, 16, 32, 256, 512, 1024, 2048));
  EXPECT_THAT(offered("halfSizeY"), ElementsAre(2, 8, 16, 128, 256, 512, 1024));
}

TEST_F(MakeParametersDialogTest, UnusableSizeOfTheBlockIsShownAndRefused) {
  ABMakeParameters block;
  block.halfSizeX = 100;
  dialog_.SetParameters(block);
  EXPECT_EQ(editor<QComboBox>("halfSizeX").currentText(), "100 (not usable)");
  EXPECT_EQ(messageOnOk(), "Columns is 100; expected one of 2, 4, 16, 32, 256, 512, 1024, 2048.");
  EXPECT_EQ(focused_, "halfSizeX");
}

TEST_F(MakeParametersDialogTest, FieldsFollowTheChoicesThatUseThem) {
  dialog_.SetParameters({});
  EXPECT_FALSE(editor<QLineEdit>("uniformBoxU").isEnabled());
  EXPECT_FALSE(editor<QLineEdit>("kernelWidthU").isEnabled());
  EXPECT_FALSE(editor<QLineEdit>("taperWidthU").isEnabled());
  choose("weightingMode", kUniformWeighting);
  choose("kernelType", kKernelLorentz);
  choose("taperType", kTaperTh);
  EXPECT_TRUE(editor<QLineEdit>("uniformBoxU").isEnabled());
  EXPECT_TRUE(editor<QLineEdit>("kernelWidthU").isEnabled());
  EXPECT_TRUE(editor<QLineEdit>("taperWidthU").isEnabled());
  EXPECT_FALSE(editor<QLineEdit>("taperWidthV").isEnabled());
  EXPECT_TRUE(editor<QLineEdit>("taperParam4").isEnabled());
}

TEST_F(MakeParametersDialogTest, CellAndFieldOfViewFollowTheEdits) {
  EXPECT_EQ(label("cellX"), "unknown");
  type("uvScaleU", "103132.40312354818");  // twice that is one wavelength per arcsecond, in radians
  type("uvLimitU", "2");
  choose("halfSizeX", 512);
  EXPECT_EQ(label("gridX"), "206.3 kλ");
  EXPECT_EQ(label("cellX"), "0.5 arcsec");
  EXPECT_EQ(label("fieldX"), "256 arcsec");
  type("uvLimitU", "20");
  EXPECT_EQ(label("cellX"), "50 mas");
  type("uvLimitU", "x");
  EXPECT_EQ(label("cellX"), "unknown");
  EXPECT_EQ(label("cellY"), "unknown");
}

TEST_F(MakeParametersDialogTest, EveryFieldHasAToolTipWithItsRange) {
  for (std::size_t i = 0; i < kMakeFieldCount; ++i) {
    const char* const name = MakeParametersModel::name(static_cast<MakeField>(i));
    const QString tip = editor<QWidget>(name).toolTip();
    EXPECT_GT(tip.size(), 20) << name;
    const bool tellsRange = tip.contains("or more") || tip.contains("or less") || tip.contains("any number");
    EXPECT_TRUE(tellsRange || dialog_.findChild<QLineEdit*>(name) == nullptr) << name;
  }
}

TEST_F(MakeParametersDialogTest, TabKeyFollowsTheEye) {
  dialog_.SetParameters(distinctBlock());
  std::vector<std::string> order;
  QWidget* widget = dialog_.nextInFocusChain();
  for (; widget != &dialog_; widget = widget->nextInFocusChain())
    for (std::size_t i = 0; i < kMakeFieldCount; ++i)
      if (widget->objectName() == MakeParametersModel::name(static_cast<MakeField>(i)))
        order.push_back(widget->objectName().toStdString());
  EXPECT_THAT(order, ElementsAre("uvLimitU", "uvLimitV", "uvScaleU", "uvScaleV", "halfSizeX", "halfSizeY",
                                 "shiftX", "shiftY", "weightingMode", "uniformBoxU", "uniformBoxV",
                                 "useVisWeights", "kernelType", "kernelWidthU", "kernelWidthV", "taperType",
                                 "taperWidthU", "taperWidthV", "taperParam3", "taperParam4"));
}

TEST_F(MakeParametersDialogTest, NoTwoMnemonicsAreTheSame) {
  std::vector<std::string> keys;
  const auto take = [&keys](const QString& text) {
    const auto at = text.indexOf('&');
    if (at >= 0) keys.push_back(text.mid(at + 1, 1).toLower().toStdString());
  };
  for (const QLabel* const each : dialog_.findChildren<QLabel*>()) take(each->text());
  for (const QAbstractButton* const each : dialog_.findChildren<QAbstractButton*>()) take(each->text());
  EXPECT_GE(keys.size(), 11U);
  std::sort(keys.begin(), keys.end());
  EXPECT_EQ(std::adjacent_find(keys.begin(), keys.end()), keys.end());
}

}  // namespace
}  // namespace lumo
