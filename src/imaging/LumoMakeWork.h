// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/AArray.h"
#include "core/AMatrix.h"
#include "core/AMatrixRect.h"
#include "core/AObjArray.h"
#include "core/PhaseTimer.h"
#include "core/Progress.h"
#include "core/Status.h"
#include "core/TMinMax.h"
#include "imaging/AB3DFunc.h"
#include "imaging/ABMakeParameters.h"
#include "imaging/FourierTransform.h"
#include "imaging/SpectralGridSet.h"
#include "io/AMapHeader.h"
#include "io/MapProduct.h"
#include "io/VisibilityInputs.h"

namespace lumo {

/// The imaging worker: grids all visibilities, transforms the grids, and writes `order` dirty maps and
/// 2·order−1 dirty beams with one common scale that gives beam 0 a peak of exactly 1.
///
///     LumoMakeWork work(order);
///     work.setReferenceFrequency(hz); work.SetInputs(...); name the products; work.Run(...)
///
/// Dirty map k is the transform of the visibilities weighted by ((ν − ν0)/ν0)^k, beam k that of the sampling
/// function with the same weight. Products whose name is empty are not saved. Used once; indicators are
/// called on the caller's thread.
class LumoMakeWork {
 public:
  explicit LumoMakeWork(std::int32_t order);
  virtual ~LumoMakeWork() = default;

  /// `parameters` must stay alive and must have been through ABMakeParameters::Setup; the arrays are copied.
  void SetInputs(const ABMakeParameters* parameters, const VisibilityInputs& inputs);
  void setReferenceFrequency(double hertz) { referenceFrequency_ = hertz; }
  /// Width of the selected channel-0 frequencies in Hz, for the maps' frequency axis.
  void setBandwidth(double hertz) { bandwidth_ = hertz; }
  /// Lines for the maps' history.
  void setHistory(std::vector<std::string> lines) { history_ = std::move(lines); }
  [[nodiscard]] AObjArray<std::string>& dirtyMapNames() { return dirtyMapNames_; }
  [[nodiscard]] AObjArray<std::string>& beamNames() { return beamNames_; }
  [[nodiscard]] std::int32_t order() const { return order_; }
  [[nodiscard]] std::int32_t beamCount() const { return 2 * order_ - 1; }

  /// Does the work. Every argument may be null. Returns 1 on success; 0 when it was cancelled or the data
  /// cannot be imaged (no usable visibility, no extent in u or v, a file that cannot be read): status() says
  /// which, and nothing was written in the latter cases.
  virtual int Run(const CancelFlag* cancel, StatusText* statusText, ProgressBar* readingBar,
                  ProgressBar* frequencyBar, ProgressBar* fileBar);
  [[nodiscard]] const Status& status() const { return status_; }
  /// The files that Run wrote or could not write, beams first.
  [[nodiscard]] const MapProducts& products() const { return products_; }
  /// What the phases of Run took: "grid" with its parts (see Gridder), "beam" (its estimate), "transform",
  /// "write".
  [[nodiscard]] std::vector<PhaseTime> phases() const;
  /// Memory for the work grids of IFs that are gridded together, in bytes; at least one IF always runs.
  static constexpr std::uint64_t kWorkGridBytes = std::uint64_t{512} << 20;
  void setWorkGridBytes(std::uint64_t bytes) { workGridBytes_ = bytes; }
  /// Threads at most, 1 or more. The products do not depend on it.
  void setThreads(int threads) { threads_ = threads; }

  /// Fills the beam grids (2·order−1) and dirty grids (order). Returns 1, or 0 when cancelled or unreadable.
  virtual int GridVisibilities(const ABMakeParameters& parameters, SpectralGridSet& grids);
  /// Turns a grid into an image with the phase centre in the middle (see FourierTransform.h).
  virtual int FourierTransformGrid(AMatrix<Complex>& grid, AMatrix<double>& image, int direction,
                                   double columnScale, double rowScale);
  /// Correction profiles along x and y (see GridCorrection.h). Not called by Run.
  virtual int ComputeCorrectorX(AArray<double>& profile, const AB3DFunc& kernel, const TMinMax& range);
  virtual int ComputeCorrectorY(AArray<double>& profile, const AB3DFunc& kernel, const TMinMax& range);
  /// Returns 1 and leaves the image alone: maps are not divided by a correction profile, on purpose.
  virtual int ApplyGridCorrection(AMatrix<double>& image, const TMinMax& range,
                                  const ABMakeParameters& parameters);
  /// True when a record's flag byte says that the group is not to be used.
  [[nodiscard]] static bool IsGroupFlagged(const UvxRecord& record) { return record.isFlagged(); }
  /// Writes the whole image (without its two left-over columns) / its central half.
  virtual void SaveBeam(const AMapHeader& header, const TMinMax& range, const AMatrix<double>& image,
                        const std::string& name);
  virtual void SaveDirtyMap(const AMapHeader& header, const TMinMax& range, const AMatrix<double>& image,
                            const std::string& name);

 private:
  struct Geometry;

  [[nodiscard]] Status makeHeader(AMapHeader& header) const;
  [[nodiscard]] Status estimateBeam(const SpectralGridSet& grids, AMapHeader& header) const;
  int makeBeams(SpectralGridSet& grids, AMapHeader& header, double& scale);
  int makeDirtyMaps(SpectralGridSet& grids, AMapHeader& header, double scale);
  void save(const AMapHeader& header, const TMinMax& range, const AMatrix<double>& image,
            const std::string& name, const AMatrixRect& rect);
  int fail(Status status);

  VisibilityInputs inputs_;
  const ABMakeParameters* parameters_ = nullptr;
  RunIndicators indicators_;
  std::int32_t order_;
  double referenceFrequency_ = 0;
  double bandwidth_ = 0;
  std::vector<std::string> history_;
  AObjArray<std::string> dirtyMapNames_;
  AObjArray<std::string> beamNames_;
  std::uint64_t workGridBytes_ = kWorkGridBytes;
  int threads_ = 1;
  std::unique_ptr<ThreadTeam> team_;  ///< of the transforms
  std::unique_ptr<GridTransform> transform_;
  Status status_;
  MapProducts products_;
  struct Seconds {
    double grid = 0, beam = 0, transform = 0, write = 0;
  };
  Seconds seconds_;
  std::vector<PhaseTime> gridPhases_;
};

}  // namespace lumo
