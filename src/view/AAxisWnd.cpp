// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/AAxisWnd.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <utility>

#include "view/ColourTools.h"
#include "view/OutputDialogs.h"
#include "view/PanelTool.h"
#include "view/PictureExport.h"
#include "view/PlotPanel.h"
#include "view/PrintDevice.h"

namespace lumo {
namespace {

constexpr int kHeightInLines = 20;  // preferred size, so that it follows the font
constexpr int kSmallestInLines = 9;

}  // namespace

AAxisWnd::AAxisWnd(QWidget* parent)
    : QWidget(parent),
      tools_(new ColourTools(this)),
      panel_(new PlotPanel(this)),
      readOut_(new QLabel(this)) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(2);
  column->addWidget(tools_);
  column->addWidget(panel_, 1);
  column->addWidget(readOut_);

  readOut_->setTextFormat(Qt::PlainText);
  readOut_->setMargin(2);
  readOut_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  readOut_->setText(QStringLiteral("\n"));  // keeps two lines of room
  readOut_->setAccessibleName(tr("Position and value under the cursor"));
  setAccessibleName(tr("Plot"));
  // On the read-out, not on the plot: it would lie over what the cursor points at.
  readOut_->setToolTip(tr("Wheel: zoom, drag: move, double click: show everything"));
  // Lets the right button reach this window, which has the context menu.
  panel_->setAttribute(Qt::WA_NoMousePropagation, false);
  panel_->setMouseTracking(true);
  panel_->installEventFilter(this);
  setFocusPolicy(Qt::StrongFocus);
  panel_->setFocusProxy(this);

  connect(tools_, &ColourTools::changed, this, &AAxisWnd::refresh);
  connect(tools_, &ColourTools::saveRequested, this, &AAxisWnd::savePicture);
}

AAxisWnd::~AAxisWnd() {
  // The panel is destroyed later, with the other children, and must not look at the axis any more.
  panel_->removeEventFilter(this);
  panel_->setAxis(nullptr);
}

void AAxisWnd::SetAxis(std::unique_ptr<A2_3DAxis> axis) {
  panel_->setAxis(axis.get());
  axis_ = std::move(axis);
  tools_->setGraph(axis_ ? axis_->colours() : nullptr);
  readOut_->setText(QStringLiteral("\n"));
}

void AAxisWnd::refresh() {
  tools_->setGraph(axis_ ? axis_->colours() : nullptr);
  panel_->refresh();
}

void AAxisWnd::redraw() {
  panel_->redraw();
}

void AAxisWnd::setPanelCursor(const QCursor& cursor) {
  panel_->setCursor(cursor);
}

void AAxisWnd::fit() {
  panel_->view().fit();
  panel_->redraw();
}

void AAxisWnd::zoom(double factor) {
  PanelNavigation::zoom(panel_->view(), factor);
  panel_->redraw();
}

const PanelView& AAxisWnd::view() const {
  return panel_->view();
}

QRect AAxisWnd::panelRect() const {
  return panel_->panelRect().translated(panel_->pos());
}

QString AAxisWnd::readOutText() const {
  return readOut_->text();
}

QImage AAxisWnd::picture(double scale) const {
  QImage image((QSizeF(panel_->size()) * scale).toSize(), QImage::Format_RGB32);
  image.setDevicePixelRatio(scale);
  image.fill(Qt::white);
  panel_->drawOn(image);
  return image;
}

void AAxisWnd::copyToClipboard() const {
  QGuiApplication::clipboard()->setImage(picture(devicePixelRatioF()));
}

Status AAxisWnd::exportPicture(const std::string& path) const {
  return lumo::exportPicture(
      panel_->size(), [this](QPaintDevice& device) { panel_->drawOn(device); }, path);
}

QSizeF AAxisWnd::printedSize() const {
  return panel_->size();
}

void AAxisWnd::PrintWindow(PrintDevice& device, const QRect& rectangle, const PrintFlags& /*flags*/) {
  panel_->drawInto(device.plotPainter(), rectangle);
}

QSize AAxisWnd::sizeHint() const {
  const int height = kHeightInLines * fontMetrics().lineSpacing();
  return {height * 6 / 5, height};
}

QSize AAxisWnd::minimumSizeHint() const {
  const int height = kSmallestInLines * fontMetrics().lineSpacing();
  return {height, height};
}

void AAxisWnd::fillContextMenu(QMenu& menu) {
  menu.addAction(tr("Copy to clipboard"), this, [this] { copyToClipboard(); });
  menu.addAction(tr("Save picture..."), this, [this] { savePicture(); });
  menu.addAction(tr("Show everything"), this, [this] { fit(); });
}

void AAxisWnd::contextMenuEvent(QContextMenuEvent* event) {
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  fillContextMenu(*menu);
  menu->popup(event->globalPos());
}

void AAxisWnd::keyPressEvent(QKeyEvent* event) {
  if (tool_ != nullptr && tool_->key(*event)) return;
  if (event->matches(QKeySequence::Copy)) return copyToClipboard();
  if (!PanelNavigation::key(*event, panel_->view())) return QWidget::keyPressEvent(event);
  panel_->redraw();
}

bool AAxisWnd::eventFilter(QObject* watched, QEvent* event) {
  if (watched != panel_) return QWidget::eventFilter(watched, event);
  switch (event->type()) {
    case QEvent::MouseButtonPress:
      press(static_cast<const QMouseEvent&>(*event));
      return true;
    case QEvent::MouseMove:
      move(static_cast<const QMouseEvent&>(*event));
      return true;
    case QEvent::MouseButtonRelease:
      toolTakes(static_cast<const QMouseEvent&>(*event));
      navigation_.release();
      return true;
    case QEvent::MouseButtonDblClick:
      if (!toolTakes(static_cast<const QMouseEvent&>(*event))) fit();
      return true;
    case QEvent::Wheel:
      wheel(static_cast<const QWheelEvent&>(*event));
      return true;
    case QEvent::Leave:
      readOut_->setText(QStringLiteral("\n"));
      return false;
    default:
      return false;
  }
}

void AAxisWnd::press(const QMouseEvent& event) {
  setFocus(Qt::MouseFocusReason);
  if (toolTakes(event)) return;
  navigation_.press(event, panel_->panelRect());
}

void AAxisWnd::move(const QMouseEvent& event) {
  if (navigation_.move(event, panel_->view())) {
    panel_->redraw();
  } else {
    toolTakes(event);
  }
  showReadOut(event.position());
}

PanelPointer AAxisWnd::pointerAt(const QMouseEvent& event) const {
  const QPointF at = event.position() - panel_->panelRect().topLeft();
  const PlotPoint pixel{at.x(), at.y()};
  return {pixel, panel_->view().toPlot(pixel)};
}

bool AAxisWnd::toolTakes(const QMouseEvent& event) {
  if (tool_ == nullptr) return false;
  const PanelPointer pointer = pointerAt(event);
  if (event.type() == QEvent::MouseMove) return tool_->move(pointer);
  if (event.button() != Qt::LeftButton) return false;
  if (event.type() == QEvent::MouseButtonRelease) {
    tool_->release(pointer);
    return true;
  }
  if (!panel_->panelRect().contains(event.position().toPoint())) return false;
  return event.type() == QEvent::MouseButtonPress ? tool_->press(pointer) : tool_->doubleClick(pointer);
}

void AAxisWnd::wheel(const QWheelEvent& event) {
  PanelNavigation::wheel(event, panel_->panelRect(), panel_->view());
  panel_->redraw();
  showReadOut(event.position());
}

void AAxisWnd::showReadOut(const QPointF& panelPosition) {
  std::string text;
  if (axis_ && panel_->panelRect().contains(panelPosition.toPoint())) {
    const QPointF at = panelPosition - panel_->panelRect().topLeft();
    const PlotPoint point = panel_->view().toPlot({at.x(), at.y()});
    for (const auto& graph : axis_->graphs()) {
      if (text.empty()) text = graph->readOut(point.x, point.y);
    }
  }
  if (text.find('\n') == std::string::npos) text += '\n';
  readOut_->setText(QString::fromStdString(text));
}

void AAxisWnd::savePicture() {
  saveWithDialog(this, tr("Save picture"), pictureFilters(),
                 [this](const std::string& path) { return exportPicture(path); });
}

}  // namespace lumo
