// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/AMultiAxisDlgWnd.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QFontInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <utility>

#include "view/CurvePanel.h"
#include "view/OutputDialogs.h"
#include "view/PictureExport.h"
#include "view/PrintDevice.h"

namespace lumo {
namespace {

constexpr int kHeightInLines = 26;  // preferred size, so that it follows the font
constexpr int kSmallestInLines = 12;

}  // namespace

AMultiAxisDlgWnd::AMultiAxisDlgWnd(QWidget* parent)
    : QWidget(parent), panel_(new CurvePanel(this)), readOut_(new QLabel(this)) {
  auto* const column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(2);
  column->addWidget(panel_, 1);
  column->addWidget(readOut_);

  readOut_->setTextFormat(Qt::PlainText);
  readOut_->setMargin(2);
  readOut_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  readOut_->setText(QStringLiteral("\n"));  // keeps two lines of room
  readOut_->setAccessibleName(tr("Values and point under the cursor"));
  setAccessibleName(tr("Graph"));
  // On the read-out, not on the plot: it would lie over what the cursor points at.
  readOut_->setToolTip(tr("Wheel: zoom, drag: move, double click: show everything"));
  // Lets the right button reach this window, which has the context menu.
  panel_->setAttribute(Qt::WA_NoMousePropagation, false);
  panel_->setMouseTracking(true);
  panel_->installEventFilter(this);
  setFocusPolicy(Qt::StrongFocus);
  panel_->setFocusProxy(this);
}

AMultiAxisDlgWnd::~AMultiAxisDlgWnd() {
  // The panel is destroyed later, with the other children, and must not look at the frame any more.
  panel_->removeEventFilter(this);
  panel_->setFrame(nullptr);
}

void AMultiAxisDlgWnd::SetAxis(std::unique_ptr<AMSD2DAxisMulti> frame) {
  if (frame) frame->setFontHeight(QFontInfo(font()).pixelSize());
  panel_->setFrame(frame.get());
  frame_ = std::move(frame);
  readOut_->setText(QStringLiteral("\n"));
}

void AMultiAxisDlgWnd::refresh() {
  panel_->refresh();
}

void AMultiAxisDlgWnd::followCurves() {
  panel_->followCurves();
}

void AMultiAxisDlgWnd::setScales(AxisScale xScale, AxisScale yScale) {
  if (!frame_) return;
  frame_->setScales(xScale, yScale);
  panel_->showEverything();
}

void AMultiAxisDlgWnd::fit() {
  panel_->view().fit();
  panel_->redraw();
}

void AMultiAxisDlgWnd::zoom(double factor) {
  PanelNavigation::zoom(panel_->view(), factor);
  panel_->redraw();
}

const PanelView& AMultiAxisDlgWnd::view() const {
  return panel_->view();
}

QRect AMultiAxisDlgWnd::panelRect() const {
  return panel_->panelRect().translated(panel_->pos());
}

QString AMultiAxisDlgWnd::readOutText() const {
  return readOut_->text();
}

QImage AMultiAxisDlgWnd::picture(double scale) const {
  QImage image((QSizeF(panel_->size()) * scale).toSize(), QImage::Format_RGB32);
  image.setDevicePixelRatio(scale);
  image.fill(Qt::white);
  panel_->drawOn(image);
  return image;
}

void AMultiAxisDlgWnd::copyToClipboard() const {
  QGuiApplication::clipboard()->setImage(picture(devicePixelRatioF()));
}

Status AMultiAxisDlgWnd::exportPicture(const std::string& path) const {
  return lumo::exportPicture(
      panel_->size(), [this](QPaintDevice& device) { panel_->drawOn(device); }, path);
}

void AMultiAxisDlgWnd::savePicture() {
  saveWithDialog(this, tr("Save picture"), pictureFilters(),
                 [this](const std::string& path) { return exportPicture(path); });
}

QSizeF AMultiAxisDlgWnd::printedSize() const {
  return panel_->size();
}

void AMultiAxisDlgWnd::PrintWindow(PrintDevice& device, const QRect& rectangle, const PrintFlags& /*flags*/) {
  panel_->drawInto(device.plotPainter(), rectangle);
}

QSize AMultiAxisDlgWnd::sizeHint() const {
  const int height = kHeightInLines * fontMetrics().lineSpacing();
  return {height * 8 / 5, height};
}

QSize AMultiAxisDlgWnd::minimumSizeHint() const {
  const int height = kSmallestInLines * fontMetrics().lineSpacing();
  return {height, height};
}

void AMultiAxisDlgWnd::contextMenuEvent(QContextMenuEvent* event) {
  auto* const menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->addAction(tr("Copy to clipboard"), this, [this] { copyToClipboard(); });
  menu->addAction(tr("Save picture..."), this, [this] { savePicture(); });
  menu->addAction(tr("Show everything"), this, [this] { fit(); });
  menu->popup(event->globalPos());
}

void AMultiAxisDlgWnd::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) return copyToClipboard();
  if (!PanelNavigation::key(*event, panel_->view())) return QWidget::keyPressEvent(event);
  panel_->redraw();
}

bool AMultiAxisDlgWnd::eventFilter(QObject* watched, QEvent* event) {
  return watched == panel_ ? handleMouse(*event) : QWidget::eventFilter(watched, event);
}

bool AMultiAxisDlgWnd::handleMouse(QEvent& event) {
  switch (event.type()) {
    case QEvent::MouseButtonPress:
      setFocus(Qt::MouseFocusReason);
      navigation_.press(static_cast<const QMouseEvent&>(event), panel_->panelRect());
      return true;
    case QEvent::MouseMove: {
      const auto& mouse = static_cast<const QMouseEvent&>(event);
      if (navigation_.move(mouse, panel_->view())) panel_->redraw();
      showReadOut(mouse.position());
      return true;
    }
    case QEvent::MouseButtonRelease:
      navigation_.release();
      return true;
    case QEvent::MouseButtonDblClick:
      fit();
      return true;
    case QEvent::Wheel: {
      const auto& wheel = static_cast<const QWheelEvent&>(event);
      PanelNavigation::wheel(wheel, panel_->panelRect(), panel_->view());
      panel_->redraw();
      showReadOut(wheel.position());
      return true;
    }
    case QEvent::Leave:
      readOut_->setText(QStringLiteral("\n"));
      return false;
    default:
      return false;
  }
}

void AMultiAxisDlgWnd::showReadOut(const QPointF& panelPosition) {
  QString text = QStringLiteral("\n");
  if (frame_ && panel_->panelRect().contains(panelPosition.toPoint())) {
    const QPointF at = panelPosition - panel_->panelRect().topLeft();
    text = QString::fromStdString(frame_->readOut({at.x(), at.y()}, panel_->view()));
  }
  readOut_->setText(text);
}

}  // namespace lumo
