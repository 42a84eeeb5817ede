// SPDX-License-Identifier: GPL-3.0-or-later
// lumo_fuzz_seeds FOLDER: writes the first files of every corpus, small ones of each kind, into
// FOLDER/<target>. The corpora of the repository grew from them (tools/fuzz.sh tells how).
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "SampleFiles.h"
#include "convert/UvfitsBuilder.h"
#include "io/FitsSample.h"
#include "run/ParameterStore.h"
#include "run/RunHistory.h"

namespace lumo::fuzz {
namespace {

std::string folder;

/// The path of a new file of a corpus.
std::string seed(const std::string& target, const std::string& name) {
  std::filesystem::create_directories(folder + "/" + target);
  return folder + "/" + target + "/" + name;
}

void writeTexts(const std::string& target, const std::vector<std::string>& texts) {
  for (std::size_t i = 0; i < texts.size(); ++i) putFile(seed(target, "text" + std::to_string(i)), texts[i]);
}

void writeUvxSeeds() {
  writeSampleUvx(seed("uvx", "plain"));
  writeSampleUvx(seed("uvx", "one"), sampleContent(1, 1, 1), 1);
  writeSampleUvx(seed("uvx", "empty"), sampleContent(1, 1, 1), 0);
  writeSampleUvx(seed("uvx", "wide"), sampleContent(4, 8, 2), 3);
  UvxContent content = sampleContent(1, 2, 2);
  content.sources.push_back({70000, "SECOND", UvxFrame::kFk4, 1.5, -80.0, 1950.0});
  content.products = {-5, -6};
  writeSampleUvx(seed("uvx", "sources"), content, 2);
  content = sampleContent(1, 1, 1);
  content.shape.products = 4;
  content.products = {1, 2, 3, 4};
  content.antennas.clear();
  content.history.clear();
  content.unit.clear();
  writeSampleUvx(seed("uvx", "stokes"), content, 2);
}

void writeMapSeeds() {
  writeSampleMap(seed("map", "own"), 4, 6);
  writeSampleMap(seed("map", "pixel"), 1, 1);
  using test::FitsSample;
  const auto put = [](const std::string& name, const FitsSample& sample) {
    putFile(seed("map", name), sample.bytes());
  };
  put("foreign", FitsSample(-32, {3, 2, 1, 1})
                     .addSky("-1E-4", "1E-4")
                     .add("CTYPE3  = 'FREQ    '")
                     .add("CRVAL3  = 5.0E9")
                     .add("CDELT3  = 8.0E6")
                     .add("CRPIX3  = 1.0")
                     .add("CTYPE4  = 'STOKES  '")
                     .add("CRVAL4  = 1.0")
                     .add("BUNIT   = 'JY/BEAM '")
                     .add("DATAMIN = -1.0")
                     .add("DATAMAX = 4.0")
                     .add("HISTORY AIPS   CLEAN BMAJ=  1.3889E-03 BMIN=  1.2E-03 BPA=  20.00")
                     .pixels<float>({1, 2, 3, 4, -1, 0}));
  put("integers", FitsSample(16, {2, 2})
                      .addSky("1E-4", "-1E-4")
                      .add("BSCALE  = 0.5")
                      .add("BZERO   = 100.0")
                      .add("BLANK   = -32768")
                      .add("RADESYS = 'FK4     '")
                      .add("BMAJ    = 1E-3")
                      .add("RESTFRQ = 1.42E9")
                      .pixels<std::int16_t>({1, -32768, 3, 4}));
  put("bytes", FitsSample(8, {3, 1}).pixels<std::uint8_t>({0, 7, 255}));
  put("double", FitsSample(-64, {2, 3})
                    .add("CTYPE1  = 'DEC--SIN'")
                    .add("CTYPE2  = 'RA---SIN'")
                    .add("CD1_1   = 1E-5")
                    .add("CD2_2   = -1E-5")
                    .add("CUNIT1  = 'deg'")
                    .add("CUNIT2  = 'deg'")
                    .add("EPOCH   = 1950.0")
                    .pixels<double>({1, 1e300, -1e300, 0, 5, 6}));
  put("wide", FitsSample(64, {2, 1, 1})
                  .addSky("-1", "1")
                  .add("CTYPE3  = 'VRAD    '")
                  .add("CRVAL3  = 1.0E4")
                  .add("CUNIT3  = 'km/s'")
                  .add("PC1_1   = 1.0")
                  .add("CROTA2  = 0.0")
                  .pixels<std::int64_t>({1, -2}));
}

void writeUvfitsSeeds() {
  using test::UvfitsBuilder;
  UvfitsBuilder plain;
  for (int i = 0; i < 3; ++i) plain.add(1e-5 * i, -2e-5 * i, 258 + i, 1, 2, 3);
  putFile(seed("uvfits", "plain"), plain.bytes());
  UvfitsBuilder full;
  full.axis("IF").pixels = 2;
  full.axis("STOKES").pixels = 2;
  full.axis("FREQ").pixels = 2;
  full.addParameter("SOURCE");
  full.addParameter("FREQSEL");
  full.tables.push_back(test::antennaTable());
  full.tables.back().text("A").numbers({1, 2, 3, 1}).text("B").numbers({4, 5, 6, 2});
  full.tables.push_back(test::frequencyTable(2));
  full.tables.back().numbers({1, 0, 5e6, 1e6, 1e6, 1e6, 1e6, 1, 1});
  full.tables.push_back(test::sourceTable(2));
  full.tables.back().numbers({1}).text("S1").numbers({10, 20, 2000, 0, 0});
  full.tables.back().numbers({2}).text("S2").numbers({30, 40, 2000, 0, 0});
  for (int i = 0; i < 4; ++i) full.add(1e-5 * i, -2e-5 * i, 258 + i, 1, 2, 3, {1.0 + i % 2, 1});
  putFile(seed("uvfits", "full"), full.bytes());
  UvfitsBuilder integers;
  integers.bitpix = 16;
  integers.axis("COMPLEX").pixels = 2;
  integers.parameterScales = {1e-9, 1e-9, 1e-9, 1, 1, 1};
  integers.edit = [](test::FitsHeader& header) {
    header.history("a line of history");
    header.text("BUNIT", "JY").text("OBJECT", "SRC");
  };
  integers.add(100, 200, 258, 1, 2, 3);
  putFile(seed("uvfits", "integers"), integers.bytes());
  UvfitsBuilder antennas;
  antennas.parameterNames = {"UU---SIN", "VV---SIN", "WW---SIN", "ANTENNA1", "ANTENNA2", "DATE"};
  antennas.parameterZeros = {0, 0, 0, 0, 0, 2450000.5};
  antennas.groups.push_back({{1e-5, 2e-5, 0, 1, 2, 0.5}, {1, 2, 3}});
  putFile(seed("uvfits", "antennas"), antennas.bytes());
}

void writeParameterSeeds() {
  writeTexts(
      "profile",
      {"[ZELMFS-FILES]\nNUVX=2\nUVX0=a.uvx\nUVX1=b.uvx\nITER=200\nPOROG=0.02\nMINRANGE=-2\nMAXRANGE=2.5\n"
       "ORDER=3\nGAIN=0.05\nFQCENTER=5000.5\nPREFIX=P\nNONREG=1\nVARGAIN=0\nFOLDER=\" out/ \"\n",
       "; a comment\r\n[Other]\r\nkey = value\r\n[zelmfs-files]\r\nnuvx=1\r\nuvx0=absent.uvx\r\n", "",
       "[ZELMFS-FILES]\nNUVX=1\nUVX0=<<<END\na.uvx\nEND\nITER=1e3\n"});
  std::filesystem::create_directories(folder + "/work");
  std::filesystem::current_path(folder + "/work");
  for (const char* const name : {"a.uvx", "b.uvx"}) writeSampleUvx(name);
  UvxFileList files;
  for (const char* const name : {"a.uvx", "b.uvx"}) require(files.AddFile(name) != 0, "no sample");
  files.setSelected(1, 2, false);
  RunParameters parameters;
  ParameterStore store("");
  require(store.SaveParameters(parameters, files) != 0, "cannot save");
  std::filesystem::copy(ParameterStore::kBinaryName, seed("binary", "saved"));
  putFile(seed("binary", "nothing"), std::string(4, '\0'));
  std::string text;
  const std::vector<std::string> history =
      runHistory(RunParameters{}, files.imaging(), files.inputs(), {{123, 0xabcdef}, {456, 0xfedcba98}});
  for (const std::string& line : history) text += line + "\n";
  writeTexts("history", {text, "INDEXERROR = 1\nFASTCLEAN = 1\n" + text, "ITER = 5\nITER = 6\nPREFIX =\n"});
  std::filesystem::current_path(folder);
  std::filesystem::remove_all(folder + "/work");
}

void writeTextSeeds() {
  const std::string pixels = R"(# Region file format: DS9 version 4.1
global color=green
image
circle(10,12,4) # text={core}
ellipse(16,12,5,3,30)
box(8,8,6,4,45)
polygon(2,2,9,3,7,9)
)";
  const std::string sky = R"(icrs
circle(23:59:59.8,+41:30:00,5")
ellipse(359.998d,41.501d,4",0.05',20)
)";
  const std::string fk5 = R"(fk5;circle 23h59m59.8s 41d30m0s 2e-5r
box(359.9990,41.5,8",8",10) # color=red text='a b'
)";
  const std::string fk4 = R"(fk4
ellipse(359.999,41.5,6",3",0)
physical;circle(4i,5i,3p)
)";
  const std::string dos = "\xEF\xBB\xBFimage\r\n+circle(5,5,2);-box(3,3,2,2,0)\r\n# a comment\r\n";
  writeTexts("region", {pixels, sky, fk5, fk4, dos});
  writeTexts("sky", {R"({"name":"test","ra_deg":10,"dec_deg":-40.5,"reference_mhz":5000,"components":[
{"type":"point","east_mas":0,"north_mas":1.5,"flux_jy":2.5,"index":-0.7,"curvature":0.1,"name":"core"},
{"type":"gaussian","east_arcsec":1e-3,"north_mas":0,"flux_jy":1,"index":0,"major_mas":2,"minor_mas":1,"pa_deg":30}]})",
                     R"({"ra_deg":359.5,"dec_deg":90,"reference_mhz":1e3,"components":[]})",
                     R"({"name":"\u00e9\ud83d\ude00","ra_deg":null,"components":[[[]]],"more":true})"});
  writeTexts("array",
             {"# name x y z\nBR -2112065.0 -3705356.5 4726813.7\nFD -1324009 -5332182\t3231962 # Texas\n",
              "A 6378137 0 0\nB 0 6378137 0\nA 0 0 6356752\n", "A 1 2\n"});
  writeTexts("frequency", {"1000000000 2000000000\n", "4.9e9\t5.1E+9", "-1 nan", "inf 1e400", ""});
}

}  // namespace
}  // namespace lumo::fuzz

int main(int count, char** arguments) {
  using namespace lumo::fuzz;
  if (count != 2) {
    std::fprintf(stderr, "usage: lumo_fuzz_seeds FOLDER\n");
    return 2;
  }
  std::filesystem::create_directories(arguments[1]);
  folder = std::filesystem::canonical(arguments[1]).string();
  writeUvxSeeds();
  writeMapSeeds();
  writeUvfitsSeeds();
  writeParameterSeeds();
  writeTextSeeds();
  return 0;
}
