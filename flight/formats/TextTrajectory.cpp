// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/TextTrajectory.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <stdexcept>
#include <string_view>

#include <fmt/format.h>

#include "flight/formats/DelimitedText.h"
#include "flight/formats/TextTrajectoryColumns.h"
#include "flight/strips/GpsWeek.h"
#include "platform/geomra/Degree.h"
#include "platform/tessaly/TransverseMercator.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

using Geomra::degree;
using std::numbers::pi;

using Q = TrajectoryQuantity;
using Words = std::vector<std::string_view>;
using Zone = Tessaly::TransverseMercatorProjectionParameter;

constexpr double adjustedBy = 1e9;       // [s]
constexpr double firstUnadjusted = 7e8;  // [s] March 2002 since 1980, November 2033 adjusted

Zone zoneOf(const TextTrajectoryFormat& format) {
  if (!format.epsg) {
    throw Error(
        "the trajectory has eastings and northings or headings from grid north: give the EPSG code "
        "of its UTM zone");
  }
  try {
    return Zone::UTMfromEPSG(*format.epsg);
  } catch (const std::invalid_argument& fault) {
    throw Error(fault.what());
  }
}

std::string_view unitName(AngleUnit unit) {
  return unit == AngleUnit::Degrees ? "degrees" : "radians";
}

TimeScale scaleOf(double time) {
  if (time >= 0.0 && time <= 2 * weekSeconds) return TimeScale::OfWeek;
  return time < firstUnadjusted ? TimeScale::Adjusted : TimeScale::Gps;
}

/// Brings the times of a file, in its order, to seconds of a week or since 1980.
class TimeReader {
 public:
  TimeReader(const DelimitedText& text, TimeScale scale) : text_(text), scale_(scale) {}

  double next(double time) {
    if (scale_ == TimeScale::FoundOut) scale_ = scaleOf(time);
    if (scale_ == TimeScale::Adjusted) time += adjustedBy;
    if (ofWeek()) time = beyondTheWeek(time);
    if (!(time >= 0.0) || (ofWeek() && time > 2 * weekSeconds)) refuse(time);
    first_ = std::min(first_, time);
    last_ = std::max(last_, time);
    if (last_ - first_ > weekSeconds) {
      text_.refuse(
          fmt::format("its time is {} s away from another one of the file; split files of "
                      "more than a week, and see that all times count the same",
                      last_ - first_));
    }
    before_ = time;
    return time;
  }

  bool ofWeek() const { return scale_ == TimeScale::OfWeek; }

  /// Number of the week of the earliest time.
  double firstWeek() const { return std::floor(first_ / weekSeconds); }

 private:
  double beyondTheWeek(double time) const {
    return before_ > 0.9 * weekSeconds && time < 0.1 * weekSeconds ? time + weekSeconds : time;
  }

  [[noreturn]] void refuse(double time) const {
    text_.refuse(ofWeek() ? fmt::format("the time {} s is none of a week, as others of the file or "
                                        "the format say",
                                        time)
                          : "the time is before 1980, the begin of GPS time");
  }

  const DelimitedText& text_;
  TimeScale scale_;
  double before_ = 0.0;
  double first_ = std::numeric_limits<double>::infinity();
  double last_ = -std::numeric_limits<double>::infinity();
};

class TrajectoryReader {
 public:
  TrajectoryReader(const std::filesystem::path& file, const TextTrajectoryFormat& format)
      : format_(format),
        places_(columnPlacesOf(format.columns)),
        projected_(places_[Q::Easting].has_value()),
        grid_(format.heading == NorthReference::Grid),
        zone_(projected_ || grid_ ? zoneOf(format) : Zone()),
        file_(file.string()),
        text_(file),
        times_(text_, format.time) {}

  TextTrajectory read() {
    TextTrajectory trajectory;
    while (text_.next()) {
      if (trajectory.records.empty() && !holdsANumber(text_.line())) continue;
      if (!delimiter_) delimiter_ = format_.delimiter.value_or(delimiterOf(text_.line()));
      trajectory.records.push_back(record(wordsOf(text_.line(), *delimiter_)));
    }
    if (trajectory.records.empty()) {
      throw Error(file_ + ": holds no line of numbers, no trajectory");
    }
    checkPositionUnit();
    countFromWeek(trajectory);
    trajectory.attitudeMayBeRadians = attitudeMayBeRadians();
    return trajectory;
  }

 private:
  SbetRecord record(const Words& words) {
    SbetRecord record;
    record.time = times_.next(value(words, Q::Time));
    const auto geographic = position(words);
    record.longitude = geographic.x;
    record.latitude = geographic.y;
    record.height = geographic.z;
    record.roll = value(words, Q::Roll);
    record.pitch = value(words, Q::Pitch);
    record.heading = value(words, Q::Heading);
    for (const double angle : {record.roll, record.pitch, record.heading}) {
      largestAttitude_ = std::max(largestAttitude_, std::abs(angle));
    }
    if (grid_) record.heading += Tessaly::meridianConvergence(geographic, zone_);
    return record;
  }

  Geomra::PhysicalSpace::point position(const Words& words) {
    const double height = value(words, Q::Height);
    if (projected_) {
      return Tessaly::inverseTransverseMercatorProjection(
          {value(words, Q::Easting), value(words, Q::Northing), height}, zone_, false);
    }
    const double latitude = value(words, Q::Latitude), longitude = value(words, Q::Longitude);
    largestLatitude_ = std::max(largestLatitude_, std::abs(latitude));
    largestLongitude_ = std::max(largestLongitude_, std::abs(longitude));
    return {longitude, latitude, height};
  }

  AngleUnit unitOf(const Q& quantity) const {
    return quantity.kind == Q::PositionAngle ? format_.positionUnit : format_.attitudeUnit;
  }

  /// [s], [m], [rad]
  double value(const Words& words, Q::Place place) const {
    const Q& quantity = trajectoryQuantities[place];
    const double read = text_.finiteNumber(words, *places_[place], quantity.name);
    const bool inDegrees = quantity.kind != Q::Plain && unitOf(quantity) == AngleUnit::Degrees;
    const double converted = inDegrees ? read * degree : read;
    if (!(converted >= quantity.lowest && converted <= quantity.highest)) {
      refuseValue(quantity, read, inDegrees ? degree : 1.0);
    }
    return converted;
  }

  [[noreturn]] void refuseValue(const Q& quantity, double read, double unit) const {
    const bool angle = quantity.kind != Q::Plain;
    std::string fault =
        fmt::format("the {} is {}{}{}, not between {:.6g} and {:.6g}{}", quantity.name, read,
                    angle ? " " : "", angle ? unitName(unitOf(quantity)) : "",
                    quantity.lowest / unit, quantity.highest / unit, quantity.hint);
    const double asDegrees = read * degree;
    if (angle && unit == 1.0 && asDegrees >= quantity.lowest && asDegrees <= quantity.highest) {
      fault += fmt::format("; say degrees for the {} if they are",
                           quantity.kind == Q::PositionAngle ? "positions" : "attitude");
    }
    text_.refuse(fault);
  }

  bool attitudeMayBeRadians() const {
    return format_.attitudeUnit == AngleUnit::Degrees && largestAttitude_ <= 2 * pi * degree;
  }

  /// Nobody flies over land where latitude and longitude are that small in degrees.
  void checkPositionUnit() const {
    if (projected_ || format_.positionUnit != AngleUnit::Degrees) return;
    if (largestLatitude_ > pi / 2 * degree || largestLongitude_ > pi * degree) return;
    throw Error(fmt::format(
        "{}: degrees were said, but no latitude is beyond pi/2 and no longitude beyond pi: say "
        "radians for the positions{}",
        file_, attitudeMayBeRadians() ? " and the attitude" : ""));
  }

  void countFromWeek(TextTrajectory& trajectory) const {
    if (times_.ofWeek()) return;
    trajectory.week = static_cast<std::int64_t>(times_.firstWeek());
    for (auto& record : trajectory.records) record.time -= times_.firstWeek() * weekSeconds;
  }

  const TextTrajectoryFormat& format_;
  TrajectoryColumnPlaces places_;
  bool projected_, grid_;
  Zone zone_;
  std::string file_;
  DelimitedText text_;
  TimeReader times_;
  std::optional<char> delimiter_;
  double largestLatitude_ = 0.0, largestLongitude_ = 0.0;  // [rad]
  double largestAttitude_ = 0.0;                           // [rad]
};

}  // namespace

TextTrajectory readTextTrajectory(const std::filesystem::path& file,
                                  const TextTrajectoryFormat& format) {
  return TrajectoryReader(file, format).read();
}

}  // namespace Velorn::Flights
