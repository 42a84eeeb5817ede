// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/MainDialogFixture.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QDir>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMouseEvent>
#include <QPixmap>
#include <new>

#include "app/ElidedLabel.h"
#include "convert/AntennaArray.h"
#include "convert/Simulator.h"
#include "convert/SkyModel.h"
#include "io/Profile.h"
#include "run/ParameterStore.h"

namespace lumo::test {

namespace {

void clickAt(QWidget& widget, QPoint at) {
  const QPointF local(at);
  const QPointF global(widget.mapToGlobal(at));
  QMouseEvent press(QEvent::MouseButtonPress, local, global, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&widget, &press);
  QMouseEvent release(QEvent::MouseButtonRelease, local, global, Qt::LeftButton, Qt::NoButton,
                      Qt::NoModifier);
  QApplication::sendEvent(&widget, &release);
}

}  // namespace

void ScriptedPrompts::showMessage(QWidget* /*parent*/, const QString& text) {
  messages.push_back(text.toStdString());
}

bool ScriptedPrompts::confirm(QWidget* /*parent*/, const QString& text) {
  questions.push_back(text.toStdString());
  return agrees;
}

QStringList ScriptedPrompts::chooseFiles(QWidget* /*parent*/, const QString& /*folder*/) {
  if (isOutOfMemory) throw std::bad_alloc();
  return files;
}

QStringList ScriptedPrompts::chooseMaps(QWidget* /*parent*/, const QString& /*folder*/) {
  return maps;
}

QString ScriptedPrompts::chooseFolder(QWidget* /*parent*/, const QString& /*folder*/) {
  return folder;
}

QString ScriptedPrompts::chooseImportFolder(QWidget* /*parent*/, const QString& /*folder*/) {
  return importFolder;
}

void clickOn(QWidget& widget) {
  clickAt(widget, widget.rect().center());
}

void clickRow(QListView& list, int row) {
  clickAt(*list.viewport(), list.visualRect(list.model()->index(row, 0)).center());
}

void typeKey(QWidget& window, int key, const QString& text) {
  QWidget* const target = window.focusWidget() != nullptr ? window.focusWidget() : &window;
  QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
  QApplication::sendEvent(target, &press);
  QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
  QApplication::sendEvent(target, &release);
}

void typeInto(QLineEdit& edit, const QString& text) {
  edit.setFocus();
  edit.selectAll();
  typeKey(*edit.window(), Qt::Key_Delete);
  for (const QChar one : text) typeKey(*edit.window(), one.unicode(), QString(one));
}

void savePicture(QWidget& window, const QString& name) {
  const QString folder = qEnvironmentVariable("LUMO_PICTURES");
  if (folder.isEmpty()) return;
  QDir().mkpath(folder);
  EXPECT_TRUE(window.grab().save(folder + "/" + name + ".png")) << name.toStdString();
}

CLumoDlg& MainDialogTest::open() {
  dialog_ = std::make_unique<CLumoDlg>(prompts_, log_, store_.path());
  dialog_->OnInitDialog();
  dialog_->show();
  QApplication::processEvents();
  return *dialog_;
}

void MainDialogTest::close() {
  press("close");
  EXPECT_FALSE(dialog_->isVisible());
}

std::vector<std::string> MainDialogTest::simulateBands(const std::vector<double>& bandsMhz) {
  SkyModel sky;
  const Status parsed = sky.parse(R"({"name": "pair", "ra_deg": 83.75, "dec_deg": 42.5,
      "reference_mhz": 5000, "components": [
      {"type": "point", "east_mas": 1.1, "north_mas": 1.2, "flux_jy": 1.0, "index": -0.7},
      {"type": "point", "east_mas": -1.3, "north_mas": 0.7, "flux_jy": 0.4, "index": 0.5}]})");
  EXPECT_TRUE(parsed.ok()) << parsed.text();
  SimulatorSettings settings;
  settings.bandsMhz = bandsMhz;
  settings.hours = 6;
  settings.intervalSeconds = 1080;
  settings.folder = data_.path();
  SimulationReport report;
  const Status simulated = simulate(settings, sky, AntennaArray::vlba(), {}, report);
  EXPECT_TRUE(simulated.ok()) << simulated.text();
  std::vector<std::string> paths;
  for (const SimulatedFile& file : report.files) paths.push_back(file.path);
  return paths;
}

void MainDialogTest::add(const std::vector<std::string>& paths) {
  prompts_.files.clear();
  for (const std::string& path : paths) prompts_.files += QString::fromStdString(path);
  press("add");
}

std::string MainDialogTest::text(const char* name) {
  QWidget& widget = get<QWidget>(name);
  if (const auto* edit = qobject_cast<QLineEdit*>(&widget)) return edit->text().toStdString();
  if (const auto* label = qobject_cast<QLabel*>(&widget)) return label->text().toStdString();
  if (const auto* path = qobject_cast<ElidedLabel*>(&widget)) return path->text().toStdString();
  throw std::runtime_error(std::string("no text in ") + name);
}

void MainDialogTest::type(const char* name, const QString& text) {
  typeInto(get<QLineEdit>(name), text);
}

std::string MainDialogTest::logText() const {
  std::string all;
  for (const Log::Line& line : log_.lines()) all += line.text + '\n';
  return all;
}

std::string MainDialogTest::saved(const std::string& key) {
  Profile profile(store_.file(ParameterStore::kProfileName));
  return profile.GetProfileString(ParameterStore::kSection, key, "(missing)");
}

}  // namespace lumo::test
