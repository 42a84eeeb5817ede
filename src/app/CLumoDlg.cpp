// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CLumoDlg.h"

#include <QAction>
#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <exception>

#include "app/AppIcon.h"
#include "app/CAboutDlg.h"
#include "app/CLogDlg.h"
#include "app/ElidedLabel.h"
#include "app/Prompts.h"
#include "core/Paths.h"
#include "core/TextForm.h"
#include "imaging/ui/AMakeParDlg.h"
#include "io/AUVXFile.h"
#include "run/ui/AFqIDTable.h"
#include "run/ui/UvxInfoDlg.h"
#include "view/StatusLabel.h"

namespace lumo {

namespace {

QString shown(const std::string& path) {
  return QFile::decodeName(path.c_str());
}

}  // namespace

CLumoDlg::CLumoDlg(Prompts& prompts, Log& log, const std::string& storeFolder, QWidget* parent)
    : QDialog(parent, Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                          Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint),
      prompts_(prompts),
      log_(log),
      list_(this),
      controls_(*this, list_),
      store_(storeFolder),
      viewers_(prompts, log) {
  setWindowTitle("Lumo");
  setWindowIcon(appIcon());
  setAcceptDrops(true);
  connectControls();
  controls_.enable(false, false);
}

CLumoDlg::~CLumoDlg() {
  // The table shows rows of members that go before it.
  hide();
}

void CLumoDlg::OnInitDialog() {
  store_.LoadParameters(parameters_, list_);
  log_.add("Not all of the last session's parameters could be read", store_.status());
  controls_.setTexts(textsOf(parameters_));
  showFiles();
  showFolder();
}

void CLumoDlg::connectControls() {
  const auto on = [this](QPushButton* button, void (CLumoDlg::*handler)()) {
    connect(button, &QPushButton::clicked, this,
            [this, handler] { guarded([this, handler] { (this->*handler)(); }); });
  };
  on(controls_.add, &CLumoDlg::addFiles);
  on(controls_.remove, &CLumoDlg::deleteFile);
  on(controls_.reRead, &CLumoDlg::reRead);
  on(controls_.info, &CLumoDlg::showInfo);
  on(controls_.browse, &CLumoDlg::browseForFolder);
  on(controls_.center, &CLumoDlg::centerReference);
  on(controls_.makePar, &CLumoDlg::editImagingParameters);
  on(controls_.uvPlane, &CLumoDlg::showUvPlane);
  on(controls_.run, &CLumoDlg::runOrCancel);
  on(controls_.graph, &CLumoDlg::showGraph);
  on(controls_.table, &CLumoDlg::showTable);
  on(controls_.mapAndAreas, &CLumoDlg::showMapSelector);
  on(controls_.close, &CLumoDlg::reject);
  connect(controls_.about, &QAction::triggered, this, &CLumoDlg::showAbout);
  connect(controls_.showLog, &QAction::triggered, this, &CLumoDlg::showLog);
  connect(controls_.idTable, &AFqIDTable::cellChanged, this, &CLumoDlg::showSurvey);
  connect(controls_.files, &QListWidget::currentRowChanged, this, [this](int row) { list_.select(row); });
}

void CLumoDlg::guarded(const std::function<void()>& handler) {
  try {
    handler();
  } catch (const std::exception& error) {
    tell("The last command failed", {StatusCode::kOutOfMemory, error.what()});
  }
}

void CLumoDlg::showMessage(const std::string& text) {
  prompts_.showMessage(this, QString::fromStdString(text));
}

void CLumoDlg::proposeWorkFolder(const std::string& folder) {
  parameters_.folder = folder;
  showFolder();
}

void CLumoDlg::setTitle(const std::string& title) {
  setWindowTitle(QString::fromStdString(title));
}

void CLumoDlg::minimise() {
  showMinimized();
}

void CLumoDlg::restore() {
  showNormal();
}

void CLumoDlg::log(const std::string& text) {
  log_.add(text);
}

void CLumoDlg::deleteFile() {
  list_.DeleteFile();
  showFiles();
}

void CLumoDlg::reRead() {
  list_.survey();
  showSurvey();
}

void CLumoDlg::showInfo() {
  const std::int32_t at = list_.selected();
  if (at < 0) return;
  const std::string path = list_.inputs().names[at];
  tell("Nothing to show", UVXView(path, this));
}

void CLumoDlg::browseForFolder() {
  const QString chosen = prompts_.chooseFolder(this, shown(parameters_.folder));
  if (chosen.isEmpty()) return;
  parameters_.folder = withSeparator(QFile::encodeName(chosen).toStdString());
  showFolder();
}

void CLumoDlg::centerReference() {
  controls_.field(RunField::kReference)
      ->setText(QString::fromStdString(generalText(list_.frequencies().centerMhz())));
}

void CLumoDlg::editImagingParameters() {
  if (!list_.hasFiles()) return;
  AUVXFile first;
  if (first.Open(list_.inputs().names[0], AFile::kRead) == 0)
    return tell("The imaging parameters cannot be shown", first.status());
  // A block that is refused opens all the same: the sheet is where it can be put right.
  if (list_.imaging().Setup(first, list_.inputs().sources[0]) == 0)
    log_.add("The imaging parameters need a change", list_.imaging().status());
  AMakeParDlg sheet(this);
  sheet.SetParameters(list_.imaging());
  if (sheet.exec() == QDialog::Accepted) list_.imaging() = sheet.parameters();
}

void CLumoDlg::showUvPlane() {
  viewers_.showUvPlane(list_, *this);
}

void CLumoDlg::showResults(int asGraph) {
  parameters_.prefix = controls_.texts().prefix;
  viewers_.showResults(asGraph, parameters_, list_.frequencies(), *this);
}

void CLumoDlg::showMapSelector() {
  viewers_.showMapSelector(parameters_.folder, *this);
}

void CLumoDlg::showAbout() {
  CAboutDlg(this).exec();
}

void CLumoDlg::showLog() {
  if (logDialog_ == nullptr) logDialog_ = new CLogDlg(log_, this);
  logDialog_->show();
  logDialog_->raise();
  logDialog_->activateWindow();
}

void CLumoDlg::showFiles() {
  {
    const QSignalBlocker quiet(controls_.files);
    controls_.files->clear();
    for (const std::string& name : list_.inputs().names) {
      controls_.files->addItem(shown(name));
      controls_.files->item(controls_.files->count() - 1)->setToolTip(shown(name));
    }
    controls_.files->setCurrentRow(list_.selected());
  }
  controls_.idTable->rebuild();
  showSurvey();
  controls_.enable(list_.hasFiles(), running_);
}

void CLumoDlg::showSurvey() {
  controls_.showSurvey(list_.frequencies(), list_.hasFiles());
}

void CLumoDlg::showFolder() {
  controls_.folder->setText(shown(parameters_.folder));
}

void CLumoDlg::tell(const std::string& what, const Status& status) {
  if (status.ok()) return;
  log_.add(what, status);
  controls_.status->setText(what + ": " + status.text());
}

void CLumoDlg::keyPressEvent(QKeyEvent* event) {
  auto* const pressed = qobject_cast<QPushButton*>(focusWidget());
  if (event->key() == Qt::Key_Escape && running_) {
    cancel_ = 1;
  } else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && pressed != nullptr) {
    if (!event->isAutoRepeat()) pressed->click();
  } else {
    QDialog::keyPressEvent(event);
  }
}

void CLumoDlg::reject() {
  if (running_) {
    if (prompts_.confirm(this, work_ + " is going on. Cancel it?")) cancel_ = 1;
    return;
  }
  takeUnchecked(controls_.texts(), parameters_);
  if (store_.SaveParameters(parameters_, list_) == 0)
    log_.add("The parameters could not be saved", store_.status());
  QDialog::reject();
}

}  // namespace lumo
