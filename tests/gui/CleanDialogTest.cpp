// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>
#include <atomic>
#include <chrono>
#include <functional>
#include <limits>
#include <memory>
#include <semaphore>
#include <string>
#include <vector>

#include "clean/CleanProblem.h"
#include "clean/CleanStage.h"
#include "clean/PlainCleanEngine.h"
#include "clean/Restoration.h"
#include "clean/StraightClean.h"
#include "clean/ui/CleanDialogWatcher.h"
#include "clean/ui/CleanGraphs.h"
#include "clean/ui/LumoCleanDlg.h"
#include "clean/ui/LumoClnShowDlg.h"
#include "core/TextForm.h"
#include "gui/GuiScript.h"
#include "io/MapProduct.h"
#include "support/TempFolder.h"
#include "view/ALineGraph.h"
#include "view/AMultiAxisDlgWnd.h"

namespace lumo {
namespace {

using test::GuiScript;
using test::modalWindow;
using test::sameBits;
using testing::ElementsAre;

constexpr std::int32_t kEndless = std::numeric_limits<std::int32_t>::max();

/// A main window that remembers what was asked of it.
class RecordingWindow : public MainWindowLink {
 public:
  void setTitle(const std::string& title) override { titles.push_back(title); }
  void minimise() override { states.emplace_back("minimised"); }
  void restore() override { states.emplace_back("restored"); }
  void log(const std::string& text) override { logged.push_back(text); }

  std::vector<std::string> titles;
  std::vector<std::string> states;
  std::vector<std::string> logged;
};

/// Holds the worker at the end of one iteration, before it looks for a pause, until the test lets it go.
class Gate : public CleanObserver {
 public:
  explicit Gate(std::int32_t iteration) : iteration_(iteration) {}
  void iterationDone(const CleanProgress& progress) override {
    if (progress.iteration != iteration_ || isOpen_) return;
    isReached_ = true;
    opened_.acquire();
  }
  [[nodiscard]] bool isReached() const { return isReached_; }
  void open() {
    isOpen_ = true;
    opened_.release();
  }

 private:
  std::int32_t iteration_;
  std::atomic<bool> isReached_{false};
  std::atomic<bool> isOpen_{false};
  std::counting_semaphore<> opened_{0};
};

/// Runs real CLEAN stages on a small problem of two terms in a temporary folder.
class CleanDialogTest : public testing::Test {
 protected:
  static constexpr test::Shape kShape{12, 10};

  CleanDialogTest() {
    header_.beamMajor = 2.1;
    header_.beamMinor = 1.3;
    header_.beamPa = 37.0;
    for (std::size_t m = 0; m < problem_.beams.size(); ++m)
      addFile(input_.beams, "MFS^bm" + std::to_string(m) + ".exm", problem_.beams[m]);
    for (std::size_t k = 0; k < problem_.maps.size(); ++k)
      addFile(input_.dirtyMaps, "MFS^dm" + std::to_string(k) + ".exm", problem_.maps[k]);
    input_.folder = temp_.path();
    input_.prefix = "MFS";
    input_.parameters.gain = 0.2;
  }

  void addFile(AObjArray<std::string>& names, const std::string& name, const AMatrix<float>& map) {
    ASSERT_TRUE(writeMap(temp_.file(name), header_, range_, map).ok());
    names.InsertAt(names.count(), temp_.file(name));
  }

  CleanReport run(std::int32_t iterations) {
    input_.parameters.iterations = iterations;
    CleanDialogWatcher watcher(window_);
    CleanReport report = CleanStage(input_).Run(watcher, &gate_);
    EXPECT_TRUE(report.status.ok()) << report.status.text();
    return report;
  }

  /// Presses "Show result" while the iteration is held, lets it go on and waits for the CLEAN view.
  GuiScript& askForResult(GuiScript& script) {
    return script.step(dialogIsOpen())
        .step([this] { return gate_.isReached(); })
        .then([this] {
          showResult().click();
          gate_.open();
        })
        .step([] { return modalWindow<LumoClnShowDlg>() != nullptr; });
  }

  /// A step that waits for the dialog, and keeps its texts at its end.
  std::function<bool()> dialogIsOpen() {
    return [this] {
      auto* const dialog = modalWindow<LumoCleanDlg>();
      if (dialog == nullptr) return false;
      wasVisible_ = dialog->isVisible();
      QObject::connect(dialog, &QDialog::finished, dialog, [this, dialog] {
        finalTexts_ = {text(*dialog, "iteration"), text(*dialog, "flux")};
      });
      return true;
    };
  }

  static std::string text(const QWidget& dialog, const char* name) {
    return dialog.findChild<QLabel*>(name)->text().toStdString();
  }
  static QPushButton& showResult() {
    return *modalWindow<LumoCleanDlg>()->findChild<QPushButton*>("showResult");
  }
  static void click(QWidget& window, const QString& text) {
    for (QPushButton* const button : window.findChildren<QPushButton*>())
      if (button->text().remove('&') == text) return button->click();
    ADD_FAILURE() << "no button " << text.toStdString();
  }

  /// The curve of the total flux.
  static const ALineGraph& fluxCurve(const CleanGraphs& graphs) {
    return dynamic_cast<const ALineGraph&>(*graphs.fluxWindow().frame()->graphs()[0]);
  }

  [[nodiscard]] test::StraightResult straightAfter(std::int32_t iterations) const {
    CleanParameters parameters = input_.parameters;
    parameters.iterations = iterations;
    return straightClean(problem_, parameters);
  }

  void expectProductsAfter(std::int32_t iterations) {
    const test::StraightResult expected = straightAfter(iterations);
    LoadedMap residual;
    ASSERT_TRUE(readMap(temp_.file("MFS^residual0.exm"), residual).ok());
    EXPECT_TRUE(sameBits(*residual.matrix, expected.residuals[0]));
    const auto beam = makeRestoringBeam(header_, range_, kShape.rows, kShape.columns);
    LoadedMap restored;
    ASSERT_TRUE(readMap(temp_.file("MFS^cln1.exm"), restored).ok());
    EXPECT_TRUE(sameBits(*restored.matrix, test::straightRestore(expected.components[1], *beam)));
  }

  test::TempFolder temp_;
  test::CleanProblem problem_ = test::sourceProblem(2, kShape, {{3, 4, {3.0, -2.0}}, {9, 9, {-1.0, 0.5}}});
  AMapHeader header_;
  TMinMax range_{-2.0, 2.5, -3.0, 2.5, -0.125, 7.5};
  CleanInput input_;
  RecordingWindow window_;
  Gate gate_{5};
  std::function<void()> rescue_ = [this] { gate_.open(); };
  bool wasVisible_ = false;
  std::vector<std::string> finalTexts_;
};

TEST_F(CleanDialogTest, TextsAndTitleFollowTheIterationsUpToTheLast) {
  GuiScript script(rescue_);
  script.step(dialogIsOpen())
      .step([this] { return gate_.isReached() && text(*modalWindow<LumoCleanDlg>(), "iteration") == "5"; })
      .then([this] {
        EXPECT_EQ(text(*modalWindow<LumoCleanDlg>(), "flux"), valToStr(straightAfter(5).totalFlux));
        EXPECT_EQ(window_.titles.back(), "5 - MFS");
        gate_.open();
      });
  EXPECT_EQ(run(40).iterations, 40);
  EXPECT_THAT(finalTexts_, ElementsAre("40", valToStr(straightAfter(40).totalFlux)));
  ASSERT_GE(window_.titles.size(), 2U);
  EXPECT_EQ(window_.titles[window_.titles.size() - 2], "40 - MFS");
  EXPECT_EQ(window_.titles.back(), "MFS");
}

TEST_F(CleanDialogTest, WithoutIterationsTheDialogOpensAndClosesAtOnceAndTheTextsStayStatic) {
  gate_.open();
  GuiScript script(rescue_);
  script.step(dialogIsOpen());
  EXPECT_EQ(run(0).iterations, 0);
  EXPECT_TRUE(wasVisible_);
  EXPECT_THAT(finalTexts_, ElementsAre("Static", "Static"));
  EXPECT_THAT(window_.titles, ElementsAre("MFS"));
}

TEST_F(CleanDialogTest, ShowResultThenContinueGoesOnFromTheSameIterationWithTheButtonUnchecked) {
  std::int32_t paused = 0;
  GuiScript script(rescue_);
  askForResult(script).then([&paused] {
    auto& view = *modalWindow<LumoClnShowDlg>();
    paused = std::stoi(text(*view.parentWidget(), "iteration"));
    EXPECT_FALSE(view.parentWidget()->findChild<QPushButton*>("showResult")->isChecked());
    click(view, "Continue");
  });
  const CleanReport report = run(40);
  EXPECT_EQ(paused, 5);
  EXPECT_FALSE(report.stopped);
  EXPECT_EQ(report.iterations, 40);
  EXPECT_THAT(finalTexts_, ElementsAre("40", valToStr(straightAfter(40).totalFlux)));
  expectProductsAfter(40);
}

TEST_F(CleanDialogTest, ShowResultThenStopCompletesExactlyTheIterationInProgressAndWritesTheProducts) {
  GuiScript script(rescue_);
  askForResult(script).then([] { click(*modalWindow<LumoClnShowDlg>(), "Stop"); });
  const CleanReport report = run(kEndless);
  EXPECT_TRUE(report.stopped);
  EXPECT_EQ(report.iterations, 5);
  EXPECT_EQ(report.products.size(), 5U);
  expectProductsAfter(5);
}

TEST_F(CleanDialogTest, EscapeInTheViewStopsLikeItsStopButton) {
  GuiScript script(rescue_);
  askForResult(script).then([] { test::pressKey(*modalWindow<LumoClnShowDlg>(), Qt::Key_Escape); });
  EXPECT_EQ(run(kEndless).iterations, 5);
}

TEST_F(CleanDialogTest, EventsAreHandledWhileTheRunningIterationEnds) {
  int later = 0;
  GuiScript script(rescue_);
  script.step(dialogIsOpen())
      .step([this] { return gate_.isReached(); })
      .then([] { showResult().click(); })
      // The worker is held inside its iteration: these steps come only if nothing waits for it.
      .step([&later] { return ++later == 30; })
      .then([this] {
        EXPECT_NE(modalWindow<LumoCleanDlg>(), nullptr) << "the view must not open before the pause";
        EXPECT_TRUE(showResult().isChecked());
        showResult().click();
        EXPECT_TRUE(showResult().isChecked()) << "a second click must not take the request back";
        gate_.open();
      })
      .step([] { return modalWindow<LumoClnShowDlg>() != nullptr; })
      .then([] { click(*modalWindow<LumoClnShowDlg>(), "Continue"); });
  EXPECT_EQ(run(20).iterations, 20);
}

TEST_F(CleanDialogTest, TheViewShowsHowTheIterationsWentOnUpToThePause) {
  GuiScript script(rescue_);
  askForResult(script).then([this] {
    auto& view = *modalWindow<LumoClnShowDlg>();
    const ALineGraph& flux = fluxCurve(view.graphs());
    EXPECT_THAT(flux.x(), ElementsAre(1, 2, 3, 4, 5));
    for (std::int32_t n = 1; n <= 5 && flux.y().size() == 5; ++n)
      EXPECT_EQ(flux.y()[static_cast<std::size_t>(n) - 1], straightAfter(n).totalFlux);
    click(view, "Stop");
  });
  EXPECT_EQ(run(kEndless).iterations, 5);
}

TEST_F(CleanDialogTest, TheViewKeepsItsGraphsSwitchedOffForTheRun) {
  gate_.open();
  std::vector<bool> shown;
  GuiScript script(rescue_);
  script.step(dialogIsOpen());
  for (int i = 0; i < 2; ++i) {
    script.then([] { showResult().click(); })
        .step([] { return modalWindow<LumoClnShowDlg>() != nullptr; })
        .then([&shown, i] {
          auto& view = *modalWindow<LumoClnShowDlg>();
          shown.push_back(view.graphs().isVisible());
          if (i == 0) view.findChild<QAbstractButton*>("convergence")->click();
          click(view, i == 0 ? "Continue" : "Stop");
        })
        .step([i] { return i == 1 || modalWindow<LumoCleanDlg>() != nullptr; });
  }
  (void)run(kEndless);
  EXPECT_THAT(shown, ElementsAre(true, false));
}

TEST_F(CleanDialogTest, ConvergenceIsDrawnWhileTheCleanGoesOnAndCanBeClosedAgain) {
  gate_.open();
  std::size_t seen = 0;
  QSize closed;
  GuiScript script(rescue_);
  script.step(dialogIsOpen())
      .then([&closed] {
        auto& dialog = *modalWindow<LumoCleanDlg>();
        EXPECT_EQ(dialog.findChild<CleanGraphs*>(), nullptr) << "nothing that costs before it is asked for";
        closed = dialog.size();
        dialog.findChild<QPushButton*>("convergence")->click();
      })
      .step([this, &seen, closed = &closed] {
        auto& dialog = *modalWindow<LumoCleanDlg>();
        const ALineGraph& flux = fluxCurve(*dialog.findChild<CleanGraphs*>());
        if (flux.x().empty()) return false;
        EXPECT_GT(dialog.height(), closed->height());
        seen = static_cast<std::size_t>(flux.x().back());
        const auto first = static_cast<std::int32_t>(flux.x().front());
        EXPECT_EQ(flux.y().front(), straightAfter(first).totalFlux);
        EXPECT_TRUE(flux.legend().startsWith("Total flux")) << flux.legend().toStdString();
        return true;
      })
      .step([&seen] {
        const ALineGraph& flux = fluxCurve(*modalWindow<LumoCleanDlg>()->findChild<CleanGraphs*>());
        return static_cast<std::size_t>(flux.x().back()) > seen;
      })
      .then([&closed] {
        auto& dialog = *modalWindow<LumoCleanDlg>();
        dialog.findChild<QPushButton*>("convergence")->click();
        EXPECT_FALSE(dialog.findChild<CleanGraphs*>()->isVisible());
        EXPECT_EQ(dialog.size(), closed);
        dialog.close();
      });
  EXPECT_TRUE(run(kEndless).stopped);
}

TEST_F(CleanDialogTest, ResultCanBeShownAgainAndAgain) {
  gate_.open();
  std::vector<std::int32_t> seen;
  GuiScript script(rescue_);
  script.step(dialogIsOpen());
  for (int i = 0; i < 3; ++i) {
    script.then([] { showResult().click(); })
        .step([] { return modalWindow<LumoClnShowDlg>() != nullptr; })
        .then([&seen, i] {
          auto& view = *modalWindow<LumoClnShowDlg>();
          seen.push_back(std::stoi(text(*view.parentWidget(), "iteration")));
          click(view, i < 2 ? "Continue" : "Stop");
        })
        .step([i] { return i == 2 || modalWindow<LumoCleanDlg>() != nullptr; });
  }
  const CleanReport report = run(kEndless);
  ASSERT_EQ(seen.size(), 3U);
  EXPECT_GE(seen[0], 1);
  // A result asked for at once may find the worker where it was: it need not have woken up in between.
  EXPECT_GE(seen[1], seen[0]);
  EXPECT_GE(seen[2], seen[1]);
  EXPECT_EQ(report.iterations, seen[2]);
}

TEST_F(CleanDialogTest, CloseBoxEndsTheRunAfterTheIterationInProgress) {
  GuiScript script(rescue_);
  script.step(dialogIsOpen()).step([this] { return gate_.isReached(); }).then([this] {
    EXPECT_FALSE(modalWindow<LumoCleanDlg>()->close()) << "the dialog stays until the worker ends";
    gate_.open();
  });
  const CleanReport report = run(kEndless);
  EXPECT_TRUE(report.stopped);
  EXPECT_EQ(report.iterations, 5);
  expectProductsAfter(5);
}

TEST_F(CleanDialogTest, EscapeEndsTheRunAndTakesARequestedPauseBack) {
  GuiScript script(rescue_);
  script.step(dialogIsOpen()).step([this] { return gate_.isReached(); }).then([this] {
    showResult().click();
    test::pressKey(*modalWindow<LumoCleanDlg>(), Qt::Key_Escape);
    gate_.open();
  });
  EXPECT_EQ(run(kEndless).iterations, 5);
}

TEST_F(CleanDialogTest, MinimisingAndRestoringTheDialogDoesTheSameToTheMainWindow) {
  GuiScript script(rescue_);
  script.step(dialogIsOpen())
      .then([] { modalWindow<LumoCleanDlg>()->showMinimized(); })
      .step([this] { return window_.states.size() == 1; })
      .then([] { modalWindow<LumoCleanDlg>()->showNormal(); })
      .step([this] { return window_.states.size() == 2; })
      .then([this] {
        modalWindow<LumoCleanDlg>()->close();
        gate_.open();
      });
  (void)run(kEndless);
  EXPECT_THAT(window_.states, ElementsAre("minimised", "restored"));
}

TEST_F(CleanDialogTest, DialogHasACaptionWithMinimiseAndCloseBoxes) {
  gate_.open();
  GuiScript script(rescue_);
  script.step(dialogIsOpen()).then([] {
    auto& dialog = *modalWindow<LumoCleanDlg>();
    EXPECT_EQ(dialog.windowTitle(), "MFS CLEANing");
    EXPECT_TRUE(dialog.windowFlags().testFlag(Qt::WindowMinimizeButtonHint));
    EXPECT_TRUE(dialog.windowFlags().testFlag(Qt::WindowCloseButtonHint));
    EXPECT_EQ(dialog.parentWidget(), nullptr);
    EXPECT_EQ(showResult().text().remove('&'), "Show result");
    dialog.close();
  });
  (void)run(kEndless);
}

TEST_F(CleanDialogTest, RefusedPriorityIsLoggedOnceAndAGrantedOneNotAtAll) {
  gate_.open();
  input_.priority = ThreadPriority::kTimecritical;
  const CleanReport report = run(200);
  EXPECT_EQ(report.iterations, 200);
  if (report.priorityStatus.ok())
    EXPECT_TRUE(window_.logged.empty());
  else
    EXPECT_THAT(window_.logged, ElementsAre(report.priorityStatus.text()));
}

TEST_F(CleanDialogTest, ShowResultWithoutAWorkerDoesNothing) {
  test::EngineInput maps(problem_);
  PlainCleanEngine engine(maps.residuals, maps.beams, input_.parameters);
  CleanWorker worker(engine);
  const AMatrix<float> beam(1, 1);
  const CleanScene scene(engine, beam, range_, ThreadPriority::kNormal);
  LumoCleanDlg dialog(worker, scene, window_);
  dialog.findChild<QPushButton*>("showResult")->click();
  QApplication::processEvents();
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  // No pause was left behind either: the worker runs through.
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  EXPECT_TRUE(worker.waitFor(std::chrono::seconds(30)));
}

}  // namespace
}  // namespace lumo
