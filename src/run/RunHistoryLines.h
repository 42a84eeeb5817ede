// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumo {

// What the history of a run's products tells by name, for the one who writes it and the one who reads it.

/// Calls line(name, value) for every run parameter, under the names of the profile.
template <typename Parameters, typename Line>
void forEachRunLine(Parameters& p, Line line) {
  line("ITER", p.iterations);
  line("POROG", p.indexThreshold);
  line("MINRANGE", p.indexMin);
  line("MAXRANGE", p.indexMax);
  line("ORDER", p.order);
  line("GAIN", p.gain);
  line("FQCENTER", p.referenceMhz);
  line("PREFIX", p.prefix);
  line("NONREG", p.nonNegative);
  line("VARGAIN", p.variableGain);
  line("FOLDER", p.folder);
}

/// The same for the parameters whose lines stand there only where they are 1, because histories of runs
/// without them are to stay as they are.
template <typename Parameters, typename Line>
void forEachOptionalLine(Parameters& p, Line line) {
  line("INDEXERROR", p.indexError);
  line("FASTCLEAN", p.fastClean);
}

/// The same for every value of the imaging block.
template <typename Block, typename Line>
void forEachImagingLine(Block& p, Line line) {
  line("uvLimitU", p.uvLimitU);
  line("uvLimitV", p.uvLimitV);
  line("uvScaleU", p.uvScaleU);
  line("uvScaleV", p.uvScaleV);
  line("shiftX", p.shiftX);
  line("shiftY", p.shiftY);
  line("halfSizeX", p.halfSizeX);
  line("halfSizeY", p.halfSizeY);
  line("weightingMode", p.weightingMode);
  line("uniformBoxU", p.uniformBoxU);
  line("uniformBoxV", p.uniformBoxV);
  line("kernelWidthU", p.kernelWidthU);
  line("kernelWidthV", p.kernelWidthV);
  line("kernelType", p.kernelType);
  line("taperWidthU", p.taperWidthU);
  line("taperWidthV", p.taperWidthV);
  line("taperParam3", p.taperParam3);
  line("taperParam4", p.taperParam4);
  line("taperType", p.taperType);
  line("useVisWeights", p.useVisWeights);
}

}  // namespace lumo
