// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <map>
#include <system_error>

#include <fmt/format.h>

#include "flight/exchange/Decompression.h"
#include "flight/exchange/FlightTrajectory.h"
#include "flight/exchange/StripsFromLas.h"
#include "flight/formats/ControlFile.h"
#include "flight/formats/PoseOrder.h"
#include "flight/strips/EnoughMemory.h"
#include "flight/strips/OrFail.h"
#include "flight/strips/OutputPlaces.h"
#include "flight/strips/Watcher.h"
#include "platform/plome/ReplacedFile.h"
#include "platform/tessaly/TransverseMercator.h"
#include <velorn/flight/Import.h>

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

void requireFile(const char* what, const fs::path& file) {
  std::error_code fault;
  if (fs::is_regular_file(file, fault)) return;
  throw Error(fmt::format("{}: {}: {}", what, file.string(),
                          fs::exists(file, fault) ? "is not a file" : "no such file"));
}

void checkNames(const std::vector<fs::path>& strips) {
  std::map<std::string, fs::path> names;
  for (const auto& strip : strips) {
    const auto [same, isNew] = names.emplace(strip.stem().string(), strip);
    if (isNew) continue;
    throw Error(fmt::format("{} and {}: two files of one name; their containers would collide",
                            same->second.string(), strip.string()));
  }
}

void checkEpsg(unsigned epsg, const std::string& origin) {
  try {
    Tessaly::TransverseMercatorProjectionParameter::UTMfromEPSG(epsg);
  } catch (const std::invalid_argument&) {
    throw Error(fmt::format(
        "{}: EPSG:{} is none of the projections that can be worked in: UTM zones of the northern "
        "hemisphere on WGS84 (32601 to 32660) or ETRS89 (25828 to 25837); project the strips to "
        "one of them first",
        origin, epsg));
  }
}

/// What all files say, or the user.
unsigned epsgOf(const std::vector<LasFacts>& files, const std::optional<unsigned>& given) {
  if (given) checkEpsg(*given, "--epsg");
  const LasFacts* known = nullptr;
  for (const LasFacts& file : files) {
    if (!file.epsg) continue;
    if (given && *file.epsg != *given) {
      throw Error(fmt::format("{}: is in EPSG:{}, but --epsg says {}", file.file.string(),
                              *file.epsg, *given));
    }
    if (known && *known->epsg != *file.epsg) {
      throw Error(fmt::format("{} is in EPSG:{} and {} in EPSG:{}; all strips must be in one zone",
                              known->file.string(), *known->epsg, file.file.string(), *file.epsg));
    }
    known = &file;
  }
  if (given) return *given;
  if (!known) {
    throw Error(fmt::format(
        "{}: does not say its projection{}; give it as --epsg, a UTM zone of the northern "
        "hemisphere on WGS84 (32601 to 32660) or ETRS89 (25828 to 25837)",
        files.front().file.string(),
        files.front().crs.empty() ? "" : " by an EPSG code (\"" + files.front().crs + "\")"));
  }
  checkEpsg(*known->epsg, known->file.string());
  return *known->epsg;
}

/// Of the trajectory's first record: what the user says, or a file does, or the first strip's.
std::int64_t weekOf(const std::vector<LasFacts>& files, const FlightTrajectory& trajectory,
                    const std::optional<std::int64_t>& given) {
  if (given) return *given;
  if (trajectory.week) return *trajectory.week;
  std::optional<std::int64_t> first;
  for (const LasFacts& file : files) {
    if (file.times.kind == TimeKind::secondsOfWeek) continue;
    const auto week = gpsTimeOf(file.low, file.times.kind, 0).week;
    first = std::min(first.value_or(week), week);
  }
  if (first) return *first;
  throw Error("neither the strips nor the trajectory say the GPS week; give it as --week");
}

/// In seconds of the week in which the trajectory begins.
TimeSpan spanOf(const LasFacts& file, std::int64_t week) {
  const auto seconds = [&](double time) {
    const GpsTime gps = gpsTimeOf(time, file.times.kind, week);
    return static_cast<double>(gps.week - week) * weekSeconds + gps.seconds;
  };
  return {seconds(file.low), seconds(file.high)};
}

void checkCover(const std::vector<LasFacts>& files, const FlightTrajectory& trajectory,
                std::int64_t week) {
  const TimeSpan recorded{trajectory.records.front().time, trajectory.records.back().time};
  for (const LasFacts& file : files) {
    const TimeSpan measured = spanOf(file, week);
    if (covers(recorded, measured)) continue;
    throw Error(fmt::format("{}: measured from {}, but the trajectory is from {}{}",
                            file.file.string(), timesText(measured, week),
                            timesText(recorded, week), likelyCause(recorded, measured)));
  }
}

void tellGaps(const std::vector<LasFacts>& files, const FlightTrajectory& trajectory,
              std::int64_t week, double longest, const Tell& tell) {
  for (const auto& gap : gapsLongerThan(longest, trajectory.records)) {
    std::string touched;
    for (const LasFacts& file : files) {
      const TimeSpan span = spanOf(file, week);
      if (span.first < gap.to && gap.from < span.last) {
        touched += (touched.empty() ? "" : ", ") + file.file.filename().string();
      }
    }
    if (touched.empty()) continue;
    tell(fmt::format("trajectory: no record for {:.3f} s, from {:.3f} to {:.3f} s, during {}",
                     gap.to - gap.from, gap.from, gap.to, touched));
  }
}

fs::path containerOf(const fs::path& folder, const fs::path& source, std::size_t part,
                     std::size_t parts) {
  const std::string stem = source.stem().string();
  return folder / (parts == 1 ? stem + ".kx" : fmt::format("{}_{}.kx", stem, part + 1));
}

/// One flight on its way into a folder.
class FlightImport {
 public:
  FlightImport(const ImportSettings& options, Watcher& watcher)
      : options_(options), progress_(watcher), tell_(watcher.teller()) {}

  ImportReport run() {
    look();
    report_.epsg = epsgOf(files_, options_.epsg);
    auto flight = readTrajectory(options_.trajectory, report_.epsg, tell_);
    week_ = weekOf(files_, flight, options_.week);
    checkCover(files_, flight, week_);
    tellGaps(files_, flight, week_, options_.trajectory.longestGap, tell_);
    makeFolder(options_.output);
    refuseExisting(options_.output / "trajectory.kx", options_.overwrite);
    const fs::path mark = markOfUnfinishedImport(options_.output);
    orFail(Plome::replaceFile(mark, "The import into this folder has not come to its end.\n"),
           Error::NoSpace);
    saveControl();
    report_.trajectories = saveTrajectories(flight, week_, report_.epsg, options_.leverArm,
                                            options_.misalignment, options_.output);
    Velorn::Trajectory trajectory(report_.trajectories);
    orFail(trajectory.importTrajectory());
    for (std::size_t k = 0; k < files_.size(); ++k) {
      progress_.report("importing", k, files_.size());
      withMemoryFor(files_[k].file.string(), [&] { import(files_[k], trajectory); });
    }
    std::error_code fault;
    if (!fs::remove(mark, fault)) {
      throw Error(mark.string() + ": cannot be removed: " + fault.message(), Error::NoSpace);
    }
    return report_;
  }

 private:
  void look() {
    for (const auto& strip : options_.strips) {
      tellLooking();
      files_.push_back(lasFactsOf(plain(strip)));
      const auto& warning = files_.back().times.warning;
      if (!warning.empty()) tell_(strip.string() + ": " + warning);
    }
  }

  void tellLooking() const {
    progress_.report("looking at", files_.size(), options_.strips.size());
  }

  /// What is decompressed stays, because adjusted strips are exported with its records.
  fs::path plain(const fs::path& strip) const {
    if (options_.decompress.empty() || !isCompressed(strip)) return strip;
    return decompressed(strip, options_.decompress, options_.output / "decompressed",
                        [this] { tellLooking(); });
  }

  void saveControl() {
    if (options_.control.empty()) return;
    const auto control = readControl(options_.control, options_.controlRadius);
    auto points = patchPoints(control.patches, options_.controlSpacing);
    if (control.withoutNormal > 0) {
      tell_(fmt::format("{}: {} of {} points have no normal and count as horizontal",
                        options_.control.string(), control.withoutNormal, control.patches.size()));
    }
    report_.patches = control.patches.size();
    report_.groundTruthPoints = points.positions.size();
    const fs::path file = options_.output / "ground_truth.kx";
    refuseExisting(file, options_.overwrite);
    saveGroundTruth(file, std::move(points));
    report_.groundTruth = file;
  }

  void import(const LasFacts& file, const Velorn::Trajectory& trajectory) {
    const LasColumns columns = columnsOf(file, week_);
    const auto parts = stripParts(columns.times, columns.sourceId, options_.gap);
    for (std::size_t k = 0; k < parts.size(); ++k) {
      const fs::path target = containerOf(options_.output, file.file, k, parts.size());
      refuseExisting(target, options_.overwrite);
      auto strip = stripOf(columns, parts[k], file.file);
      try {
        addMeasurements(strip, trajectory);
      } catch (const Error& fault) {
        throw Error(file.file.string() + ": " + fault.what(), fault.kind());
      }
      report_.strips.push_back({target, file.file, strip.times.size(), strip.week,
                                strip.times.front(), strip.times.back()});
      saveStrip(target, std::move(strip));
    }
  }

  const ImportSettings& options_;
  Watcher& progress_;
  const Tell tell_;
  ImportReport report_;
  std::vector<LasFacts> files_;
  std::int64_t week_ = 0;
};

}  // namespace

void checkImport(const ImportSettings& options) {
  if (options.strips.empty()) throw Error("no strips were named", Error::BadSettings);
  if (options.trajectory.files.empty()) throw Error("no trajectory was named", Error::BadSettings);
  for (const auto& strip : options.strips) requireFile("strip", strip);
  for (const auto& file : options.trajectory.files) requireFile("trajectory", file);
  if (!options.control.empty()) requireFile("control", options.control);
  checkNames(options.strips);
}

ImportReport importFlight(const ImportSettings& settings, const Watch& watch) {
  checkImport(settings);
  Watcher watcher(watch);
  return withMemoryFor(settings.output.string(),
                       [&] { return FlightImport(settings, watcher).run(); });
}

}  // namespace Velorn::Flights
