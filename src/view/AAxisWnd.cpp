// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/AAxisWnd.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QFile>
#include <QFileDialog>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QMouseEvent>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <cmath>
#include <utility>

#include "view/ColourTools.h"
#include "view/PictureExport.h"
#include "view/PlotPanel.h"

namespace lumo {
namespace {

constexpr double kKeyZoom = 1.25;
constexpr double kWheelZoom = 1.2;     // for one notch
constexpr double kWheelNotch = 120.0;  // eighths of a degree
constexpr double kKeyPan = 0.1;        // of the panel
constexpr int kHeightInLines = 20;     // preferred size, so that it follows the font
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

void AAxisWnd::fit() {
  panel_->view().fit();
  panel_->redraw();
}

void AAxisWnd::zoom(double factor) {
  PanelView& view = panel_->view();
  view.zoomAbout({view.panelWidth() / 2.0, view.panelHeight() / 2.0}, factor);
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
  if (event->matches(QKeySequence::Copy)) return copyToClipboard();
  PanelView& view = panel_->view();
  const double stepX = kKeyPan * view.panelWidth();
  const double stepY = kKeyPan * view.panelHeight();
  switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
      return zoom(kKeyZoom);
    case Qt::Key_Minus:
      return zoom(1.0 / kKeyZoom);
    case Qt::Key_Home:
      return fit();
    // An arrow moves the look, so the picture goes the other way.
    case Qt::Key_Left:
      view.pan(stepX, 0.0);
      break;
    case Qt::Key_Right:
      view.pan(-stepX, 0.0);
      break;
    case Qt::Key_Up:
      view.pan(0.0, stepY);
      break;
    case Qt::Key_Down:
      view.pan(0.0, -stepY);
      break;
    default:
      return QWidget::keyPressEvent(event);
  }
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
      dragging_ = false;
      return true;
    case QEvent::MouseButtonDblClick:
      fit();
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
  dragging_ = event.button() == Qt::LeftButton && panel_->panelRect().contains(event.position().toPoint());
  lastDrag_ = event.position();
}

void AAxisWnd::move(const QMouseEvent& event) {
  if (dragging_) {
    const QPointF by = event.position() - lastDrag_;
    lastDrag_ = event.position();
    panel_->view().pan(by.x(), by.y());
    panel_->redraw();
  }
  showReadOut(event.position());
}

void AAxisWnd::wheel(const QWheelEvent& event) {
  const QPointF at = event.position() - panel_->panelRect().topLeft();
  panel_->view().zoomAbout({at.x(), at.y()}, std::pow(kWheelZoom, event.angleDelta().y() / kWheelNotch));
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
  QFileDialog dialog(this, tr("Save picture"));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setNameFilters({tr("PNG picture (*.png)"), tr("PDF document (*.pdf)"), tr("SVG drawing (*.svg)")});
  // With the suffix known to the dialog, its question before overwriting is about the file that is written.
  const auto followFilter = [&dialog](const QString& filter) {
    dialog.setDefaultSuffix(filter.section("*.", 1).section(')', 0, 0));
  };
  followFilter(dialog.selectedNameFilter());
  connect(&dialog, &QFileDialog::filterSelected, &dialog, followFilter);
  if (dialog.exec() != QDialog::Accepted) return;
  const Status status = exportPicture(QFile::encodeName(dialog.selectedFiles().value(0)).toStdString());
  if (!status.ok())
    QMessageBox::warning(this, window()->windowTitle(), QString::fromStdString(status.text()));
}

}  // namespace lumo
