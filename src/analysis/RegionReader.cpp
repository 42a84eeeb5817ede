// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

#include "analysis/RegionFile.h"
#include "analysis/RegionText.h"
#include "core/AFile.h"
#include "core/TextForm.h"
#include "core/Units.h"

namespace lumo {

namespace {

constexpr std::size_t kMostBytes = std::size_t{16} << 20;

Status refuse(std::string sentence) {
  return {StatusCode::kBadFormat, std::move(sentence)};
}

std::string lowerCase(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

std::string quoted(std::string_view text) {
  constexpr std::size_t kShown = 40;
  return "\"" + printable(text.substr(0, kShown)) + "\"";
}

// Takes the word at the start of a statement, and the blanks around it, away.
std::string takeWord(std::string_view& body) {
  const auto isLetter = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  };
  const auto end = std::find_if_not(body.begin(), body.end(), isLetter);
  const std::string word = lowerCase(std::string(body.begin(), end));
  const auto next = std::find_if_not(end, body.end(), [](char c) { return c == ' ' || c == '\t'; });
  body.remove_prefix(static_cast<std::size_t>(next - body.begin()));
  return word;
}

/// Size along one axis: arcseconds, or image pixels.
struct Size {
  double value = 0.0;
  bool pixels = false;
};

class Reader {
 public:
  Reader(const RegionFrame& frame, std::vector<AreaShape>& shapes) : frame_(frame), shapes_(shapes) {}

  Status take(const RegionStatement& statement) {
    std::string_view body = statement.body;
    if (body.front() == '-' || body.front() == '!')
      return refuse("an excluded region; only regions to measure are read");
    if (body.front() == '+') body.remove_prefix(1);
    std::string word = takeWord(body);
    if (word == "global") return {};
    if (isFrame(word)) {
      if (Status status = enterFrame(word); !status.ok() || body.empty()) return status;
      word = takeWord(body);
    }
    if (Status status = splitArguments(body); !status.ok()) return status;
    AreaShape shape;
    if (Status status = makeShape(word, shape); !status.ok()) return status;
    if (shapes_.size() == kMostRegions)
      return refuse("more than " + toStr(static_cast<std::int64_t>(kMostRegions)) + " regions");
    shape.name = regionName(statement.properties);
    shapes_.push_back(std::move(shape));
    return {};
  }

 private:
  static bool isFrame(const std::string& word) {
    static constexpr std::array<std::string_view, 15> kFrames{
        "image", "physical", "fk5",      "j2000",  "icrs",      "fk4",           "b1950",     "galactic",
        "wcs",   "ecliptic", "detector", "linear", "amplifier", "supergalactic", "equatorial"};
    return std::find(kFrames.begin(), kFrames.end(), word) != kFrames.end();
  }

  Status enterFrame(const std::string& word) {
    sky_ = word != "image" && word != "physical";
    if (!sky_) return {};
    const bool old = word == "fk4" || word == "b1950";
    if (!old && word != "fk5" && word != "j2000" && word != "icrs")
      return refuse("the frame " + quoted(word) + " is not read; expected image, fk5 or icrs");
    if (!frame_.hasSky())
      return refuse("the frame " + quoted(word) + " on a map that has no position on the sky; use image");
    if (!frame_.skyName().empty() && old != (frame_.skyName() == "FK4"))
      return refuse("the frame " + quoted(word) + " on a map in " + frame_.skyName() + " coordinates");
    return {};
  }

  Status splitArguments(std::string_view body) {
    arguments_.clear();
    if (body.starts_with('(')) {
      const std::size_t end = body.find(')');
      if (end == std::string_view::npos) return refuse("a parenthesis is not closed");
      const std::string_view rest = body.substr(end + 1);
      if (rest.find_first_not_of(" \t") != std::string_view::npos)
        return refuse("unexpected text behind a region: " + quoted(rest));
      body = body.substr(1, end - 1);
    }
    constexpr std::string_view kSeparators = ", \t";
    const auto isSeparator = [&](char c) { return kSeparators.find(c) != std::string_view::npos; };
    arguments_.reserve(static_cast<std::size_t>(std::count_if(body.begin(), body.end(), isSeparator)) + 1);
    for (std::size_t at = body.find_first_not_of(kSeparators); at != std::string_view::npos;) {
      const std::size_t end = std::min(body.find_first_of(kSeparators, at), body.size());
      arguments_.push_back(body.substr(at, end - at));
      at = body.find_first_not_of(kSeparators, end);
    }
    return {};
  }

  Status makeShape(const std::string& word, AreaShape& shape) {
    if (word == "circle") return makeCircle(shape);
    if (word == "ellipse") return makeOval(AreaKind::kEllipse, shape);
    if (word == "box") return makeOval(AreaKind::kRectangle, shape);
    if (word == "polygon") return makePolygon(shape);
    return refuse(quoted(word) + " is not read; expected circle, ellipse, box or polygon");
  }

  Status wrongCount(const char* shape, const char* expected) const {
    return refuse(std::string("a ") + shape + " of " + toStr(static_cast<std::int64_t>(arguments_.size())) +
                  " values; expected " + expected);
  }

  [[nodiscard]] std::string quotedPair(std::size_t i) const {
    return quoted(std::string(arguments_[i]).append(",").append(arguments_[i + 1]));
  }

  // The position in arguments i and i + 1.
  Status position(std::size_t i, AreaPoint& point) const {
    const auto first = regionNumber(arguments_[i]);
    const auto second = regionNumber(arguments_[i + 1]);
    const auto isPixel = [this](const std::optional<RegionNumber>& number) {
      return number && (number->unit == 'i' || number->unit == 'p' || (number->unit == 0 && !sky_));
    };
    const auto wrong = [&] {
      return refuse("the position " + quotedPair(i) + " is not one of " + (sky_ ? "the sky" : "the image"));
    };
    if (isPixel(first) && isPixel(second)) {
      point = frame_.ofPixel({first->value, second->value});
      return {};
    }
    const auto ra = regionAngle(arguments_[i], true);
    const auto dec = regionAngle(arguments_[i + 1], false);
    if (!sky_ || !ra || !dec || std::abs(*dec) > 90.0) return wrong();
    const auto place = frame_.ofSky({*ra, *dec});
    if (!place) return refuse("the position " + quotedPair(i) + " is more than 90 degrees from the map");
    point = *place;
    return {};
  }

  Status size(std::size_t i, Size& size) const {
    const auto number = regionNumber(arguments_[i]);
    if (!number || !(number->value > 0.0))
      return refuse("the size " + quoted(arguments_[i]) + " is not positive");
    size.value = number->value;
    switch (number->unit) {
      case '"':
        break;
      case '\'':
        size.value *= 60.0;
        break;
      case 'r':
        size.value *= kArcsecPerRadian;
        break;
      case 'd':
        size.value *= 3600.0;
        break;
      default:
        size.pixels = number->unit != 0 || !sky_;
        if (!size.pixels) size.value *= 3600.0;
    }
    return {};
  }

  Status makeCircle(AreaShape& shape) {
    if (arguments_.size() != 3) return wrongCount("circle", "x, y and a radius");
    Size radius;
    if (Status status = position(0, shape.centre); !status.ok()) return status;
    if (Status status = size(2, radius); !status.ok()) return status;
    if (radius.pixels && !frame_.squarePixels())
      shape = AreaShape::ellipse(shape.centre, radius.value * frame_.stepX(), radius.value * frame_.stepY());
    else
      shape = AreaShape::circle(shape.centre, radius.value * (radius.pixels ? frame_.stepX() : 1.0));
    return {};
  }

  Status makeOval(AreaKind kind, AreaShape& shape) {
    const char* const word = kind == AreaKind::kEllipse ? "ellipse" : "box";
    if (arguments_.size() != 4 && arguments_.size() != 5)
      return wrongCount(word, "x, y, two sizes and an angle");
    Size a;
    Size b;
    if (Status status = position(0, shape.centre); !status.ok()) return status;
    if (Status status = size(2, a); !status.ok()) return status;
    if (Status status = size(3, b); !status.ok()) return status;
    const auto angle = arguments_.size() == 5 ? regionAngle(arguments_[4], false) : std::optional(0.0);
    if (!angle) return refuse("the angle " + quoted(arguments_[4]) + " is not a number of degrees");
    if ((a.pixels || b.pixels) && !frame_.squarePixels()) {
      if (a.pixels != b.pixels)
        return refuse(std::string("a ") + word +
                      " with one size in pixels, on a map whose pixels are not square");
      stretch(kind, a.value, b.value, *angle, shape);
      return {};
    }
    shape.kind = kind;
    shape.sizeX = a.value * (a.pixels ? frame_.stepX() : 1.0);
    shape.sizeY = b.value * (b.pixels ? frame_.stepX() : 1.0);
    shape.rotation = sky_ ? skyRotation(*angle) : frame_.rotationOf(*angle);
    return {};
  }

  // A shape of image pixels that are not square: an ellipse stays one, a box becomes a parallelogram.
  void stretch(AreaKind kind, double a, double b, double angle, AreaShape& shape) const {
    const double c = std::cos(angle * kRadianPerDegree);
    const double s = std::sin(angle * kRadianPerDegree);
    // The ends of the two axes.
    const AreaPoint first = frame_.ofPixelStep({a * c, a * s});
    const AreaPoint second = frame_.ofPixelStep({-b * s, b * c});
    if (kind == AreaKind::kRectangle) {
      std::vector<AreaPoint> corners;
      for (const auto& [i, j] : {std::pair{-0.5, -0.5}, {0.5, -0.5}, {0.5, 0.5}, {-0.5, 0.5}})
        corners.push_back(
            {shape.centre.x + (i * first.x + j * second.x), shape.centre.y + i * first.y + j * second.y});
      shape = AreaShape::polygon(std::move(corners));
      return;
    }
    // Principal axes of the matrix with the columns `first` and `second` times its transpose.
    const double p = first.x * first.x + second.x * second.x;
    const double q = first.x * first.y + second.x * second.y;
    const double r = first.y * first.y + second.y * second.y;
    const double spread = std::hypot((p - r) / 2.0, q);
    const double smaller = std::abs(first.x * second.y - first.y * second.x);
    const double semiMajor = std::sqrt((p + r) / 2.0 + spread);
    shape = AreaShape::ellipse(shape.centre, semiMajor, smaller / semiMajor,
                               0.5 * std::atan2(2.0 * q, p - r) * kDegreePerRadian);
  }

  Status makePolygon(AreaShape& shape) {
    if (arguments_.size() < 6 || arguments_.size() % 2 != 0)
      return wrongCount("polygon", "three or more pairs of x and y");
    shape.kind = AreaKind::kPolygon;
    shape.vertices.reserve(arguments_.size() / 2);
    for (std::size_t i = 0; i < arguments_.size(); i += 2) {
      AreaPoint vertex;
      if (Status status = position(i, vertex); !status.ok()) return status;
      shape.vertices.push_back(vertex);
    }
    return {};
  }

  const RegionFrame& frame_;
  std::vector<AreaShape>& shapes_;
  std::vector<std::string_view> arguments_;  ///< of the statement at hand
  bool sky_ = false;
};

}  // namespace

Status parseRegions(std::string_view text, const RegionFrame& frame, std::vector<AreaShape>& shapes) {
  shapes.clear();
  Reader reader(frame, shapes);
  Status status = forEachRegionStatement(text, [&](const RegionStatement& statement) {
    const Status taken = reader.take(statement);
    if (taken.ok()) return taken;
    return Status(taken.code(),
                  "line " + toStr(static_cast<std::int64_t>(statement.line)) + ": " + taken.message());
  });
  if (!status.ok()) shapes.clear();
  return status;
}

Status readRegions(const std::string& path, const RegionFrame& frame, std::vector<AreaShape>& shapes) {
  shapes.clear();
  AFile file;
  if (file.Open(path, AFile::kRead) == 0) return file.status();
  if (file.remaining() > kMostBytes)
    return {StatusCode::kBadFormat, "is longer than 16 MiB; this is no region file", path};
  std::string text(static_cast<std::size_t>(file.remaining()), '\0');
  if (file.Read(text.data(), text.size()) == 0) return file.status();
  return parseRegions(text, frame, shapes).about(path);
}

}  // namespace lumo
