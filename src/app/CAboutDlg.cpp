// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CAboutDlg.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "core/Version.h"

namespace lumo {

CAboutDlg::CAboutDlg(QWidget* parent) : QDialog(parent) {
  setWindowTitle("About Lumo");
  auto* const icon = new QLabel;
  icon->setObjectName("aboutIcon");
  icon->setPixmap(QApplication::windowIcon().pixmap(QSize(64, 64), devicePixelRatioF()));
  icon->setAccessibleName("Icon of Lumo");
  auto* const text = new QLabel(
      QString("<b>%1</b><br>Sky images from radio-interferometer visibilities of several frequencies."
              "<br><br>Free software under the GNU General Public License, version 3 or later."
              "<br>It comes without any warranty.<br><br>Made with Qt %2.")
          .arg(programVersion(), qVersion()));
  text->setObjectName("aboutText");
  text->setTextFormat(Qt::RichText);
  text->setTextInteractionFlags(Qt::TextBrowserInteraction);
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

  auto* const top = new QHBoxLayout;
  top->addWidget(icon, 0, Qt::AlignTop);
  top->addSpacing(fontMetrics().averageCharWidth() * 2);
  top->addWidget(text, 1);
  auto* const layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

}  // namespace lumo
