// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/records/ReportJson.h"

#include <cmath>
#include <concepts>
#include <nlohmann/json.hpp>

namespace Velorn::Flights {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<const char*, 5> classNames{"ground_truth", "roof", "slope", "bed", "flat"};

/// A report that is written (const) or read.
template <typename T, typename Report>
concept Of = std::same_as<std::remove_const_t<T>, Report>;

// The names of all values, once for both directions. A visitor is called with a name and a value;
// `unless` leaves a value out where it is the standard one.

/// A list that summaries of this version may lack.
void addedLater(auto& visit, const char* name, auto& list) {
  if (!list.empty() || visit.has(name)) visit(name, list);
}

void fields(auto& visit, Of<StripFacts> auto& strip) {
  visit("id", strip.id);
  visit("file", strip.file);
  visit("points", strip.points);
  visit("week", strip.week);
  visit("first_time", strip.first);
  visit("last_time", strip.last);
  visit("farthest_forward", strip.farthestForward);
}

void fields(auto& visit, Of<RasterCounts> auto& counts) {
  visit("points", counts.points);
  visit("not_finite", counts.notFinite);
  visit("not_last_echo", counts.notLast);
  visit("not_planar", counts.notPlanar);
  visit("no_terrain", counts.notTerrain);
  visit("not_selected", counts.notSelected);
  visit("surface", counts.surface);
  visit("representatives", counts.representatives);
  visit("median_roughness", counts.medianRoughness);
}

void fields(auto& visit, Of<RasterReport> auto& raster) {
  visit("name", raster.name);
  visit("skipped", raster.isSkipped);
  fields(visit, raster.counts);
}

void fields(auto& visit, Of<RasterizingReport> auto& rasterizing) {
  visit("strips", rasterizing.strips);
  visit("ground_truth", rasterizing.groundTruth);
  visit("seconds", rasterizing.seconds);
}

void fields(auto& visit, Of<Funnel> auto& funnel) {
  visit("candidates", funnel.candidates);
  visit("too_far", funnel.tooFar);
  visit("angle", funnel.angle);
  visit("roughness", funnel.roughness);
  visit("outlier", funnel.outlier);
  visit("thinned", funnel.thinned);
  visit("kept", funnel.kept);
  visit("median", funnel.median);
  visit("nmad", funnel.nmad);
}

void fields(auto& visit, Of<PairReport> auto& pair) {
  visit("i", pair.i);
  visit("j", pair.j);
  visit("ground_truth", pair.isGroundTruth);
  visit("classes", pair.classes);
}

void fields(auto& visit, Of<PairShift> auto& pair) {
  visit("i", pair.i);
  visit("j", pair.j);
  visit("shift", pair.shift);
  visit("cells", pair.cells);
}

void fields(auto& visit, Of<ApartReport> auto& apart) {
  visit("spacing", apart.spacing);
  visit("pairs", apart.pairs);
  visit("control", apart.control);
  visit("coarse_rounds", apart.coarseRounds);
}

void fields(auto& visit, Of<ControlItem> auto& item) {
  visit("id", item.id);
  visit("place", item.place);
  visit("points", item.points);
  visit("inclined", item.isInclined);
  visit("strips", item.strips);
  visit("correspondences", item.correspondences);
  visit("beside", item.beside);
  visit("turned_away", item.turnedAway);
  visit("rough", item.rough);
  visit("other_surface", item.otherSurface);
  visit("thinned", item.thinned);
  visit("misfit", item.misfit);
  visit("weight", item.weight);
  visit.unless("left_out", item.leftOut, std::string());
}

void fields(auto& visit, Of<StripSupport> auto& support) {
  visit("strip", support.strip);
  visit("correspondences", support.correspondences);
  visit("first_time", support.first);
  visit("last_time", support.last);
  visit("weakest_aspect", support.weakestAspect);
}

void fields(auto& visit, Of<MatchReport> auto& matching) {
  visit("search_radius", matching.searchRadius);
  visit("max_correspondences", matching.maxCorrespondences);
  visit("correspondences", matching.correspondences);
  visit("with_ground_truth", matching.withGroundTruth);
  visit("on_inclined_ground_truth", matching.onInclinedGroundTruth);
  visit("ground_truth_patches", matching.groundTruthPatches);
  visit("typical_distance", matching.typicalDistance);
  visit("disagreement", matching.disagreement);
  addedLater(visit, "control", matching.control);
  addedLater(visit, "support", matching.support);
  visit("pairs", matching.pairs);
}

void fields(auto& visit, Of<Fit> auto& fit) {
  visit("count", fit.count);
  visit("mean", fit.mean);
  visit("rms", fit.rms);
  visit("median", fit.median);
  visit("nmad", fit.nmad);
  visit("q05", fit.q05);
  visit("q25", fit.q25);
  visit("q75", fit.q75);
  visit("q95", fit.q95);
}

void fields(auto& visit, Of<FitReport> auto& fit) {
  visit("pairs", fit.pairs);
  visit("ground_truth", fit.groundTruth);
}

void fields(auto& visit, Of<GlobalCorrections> auto& globals) {
  visit("offsets", globals.offsets);
  visit("scales", globals.scales);
  visit("misalignment", globals.misalignment);
  visit("lever_arm", globals.leverArm);
}

void fields(auto& visit, Of<HeldSection> auto& held) {
  visit("strip", held.strip);
  visit("section", held.section);
  visit("correspondences", held.correspondences);
  visit("too_few", held.isLow);
  visit("locked", held.isLocked);
}

void fields(auto& visit, Of<StripMovement> auto& movement) {
  visit("strip", movement.strip);
  visit("horizontal_q90", movement.horizontal);
  visit("vertical_q90", movement.vertical);
}

void fields(auto& visit, Of<ControlMisfit> auto& item) {
  visit("id", item.id);
  visit("correspondences", item.correspondences);
  visit("before", item.before);
  visit("after", item.after);
}

void fields(auto& visit, Of<StripRedundancy> auto& strip) {
  visit("strip", strip.strip);
  visit("correspondences", strip.correspondences);
  visit("unknowns", strip.unknowns);
}

void fields(auto& visit, Of<Velorn::SolverEnd> auto& end) {
  visit("termination", end.termination);
  visit("message", end.message);
  visit("initial_cost", end.initialCost);
  visit("final_cost", end.finalCost);
  visit("steps", end.successfulSteps);
  visit("seconds", end.seconds);
  visit("residuals", end.residuals);
  visit("unknowns", end.parameters);
  visit("estimated", end.estimated);
}

void fields(auto& visit, Of<ModelFiles> auto& files) {
  visit("sections", files.sections);
  visit("parameters", files.parameters);
  visit("strip_ids", files.stripIds);
}

void fields(auto& visit, Of<AdjustmentReport> auto& adjustment) {
  visit("correspondences", adjustment.correspondences);
  visit("before", adjustment.before);
  visit("after", adjustment.after);
  visit("globals", adjustment.globals);
  visit("held_sections", adjustment.heldSections);
  visit("movements", adjustment.movements);
  visit("moved", adjustment.moved);
  visit("moved_by_one", adjustment.movedByOne);
  addedLater(visit, "redundancy", adjustment.redundancy);
  addedLater(visit, "control", adjustment.control);
  visit("solver", adjustment.solver);
  visit.unless("files", adjustment.files, ModelFiles());
}

void fields(auto& visit, Of<RoundReport> auto& round) {
  visit("round", round.number);
  visit.unless("scale", round.scale, 1.0);
  visit("matching", round.matching);
  visit("adjustment", round.adjustment);
  visit.unless("skipped", round.isSkipped, false);
  visit.unless("taken_back", round.isTakenBack, false);
}

void fields(auto& visit, Of<StableSum> auto& sum) {
  visit("name", sum.name);
  visit("unit", sum.unit);
  visit("value", sum.value);
  visit("low", sum.low);
  visit("high", sum.high);
}

void fields(auto& visit, Of<StabilityReport> auto& stability) {
  visit("length", stability.length);
  visit("starts", stability.starts);
  visit("failed", stability.failed);
  visit("best_fit", stability.bestFit);
  visit("worst_fit", stability.worstFit);
  visit("sums", stability.sums);
  visit("points", stability.points);
}

void fields(auto& visit, Of<DatumReport> auto& datum) {
  visit("fixed_by", datum.fixedBy);
  visit("warnings", datum.warnings);
}

void fields(auto& visit, Of<GeoreferencingReport> auto& georeferencing) {
  visit("folder", georeferencing.folder);
  visit("strips", georeferencing.strips);
  visit("points", georeferencing.points);
  visit("seconds", georeferencing.seconds);
  visit("skipped", georeferencing.isSkipped);
}

void fields(auto& visit, Of<StripScale> auto& scale) {
  visit("spacing", scale.spacing);
  visit("noise", scale.noise);
  visit("points", scale.points);
}

void fields(auto& visit, Of<ScaleReport> auto& scale) {
  visit("spacing", scale.spacing);
  visit("noise", scale.noise);
  visit("cell", scale.cell);
  visit("search_radius", scale.searchRadius);
  visit("neighbour_radius", scale.neighbourRadius);
  visit("max_roughness", scale.maxRoughness);
  visit("neighbours", scale.neighbours);
  visit("most_neighbours", scale.mostNeighbours);
}

void fields(auto& visit, Of<RunReport> auto& run) {
  visit("program", run.program);
  visit("steps", run.steps);
  visit("root", run.root);
  visit("strips", run.strips);
  visit("scale", run.scale);
  visit("rasterize", run.rasterizing);
  visit("apart", run.apart);
  if (!run.rounds.empty() || visit.has("rounds")) visit("rounds", run.rounds);
  visit.unless("rounds_end", run.roundsEnd, std::string());
  visit("files", run.model);
  visit("adjustment", run.adjustment);
  visit("stability", run.stability);
  visit("datum", run.datum);
  visit("georeference", run.georeferencing);
  visit.unless("failure", run.failure, std::string());
  visit("seconds", run.seconds);
  visit("peak_memory", run.peakMemory);
}

class Writer {
 public:
  template <typename T>
  void operator()(const char* name, const T& value) {
    json_[name] = of(value);
  }
  template <typename T>
  void operator()(const char* name, const std::optional<T>& value) {
    if (value) json_[name] = of(*value);
  }
  template <typename T>
  void unless(const char* name, const T& value, const T& standard) {
    if (!(value == standard)) json_[name] = of(value);
  }
  static bool has(const char* /*name*/) { return false; }

  static Json of(double value) { return std::isfinite(value) ? Json(value) : Json(); }
  template <std::integral T>
  static Json of(const T& value) {
    return value;
  }
  static Json of(const std::string& value) { return value; }
  static Json of(const std::filesystem::path& value) { return value.string(); }
  static Json of(const std::array<double, 3>& values) {
    return {of(values[0]), of(values[1]), of(values[2])};
  }
  static Json of(const PerClass& counts) {
    Json json;
    for (std::size_t i = 0; i < counts.size(); ++i) json[classNames[i]] = counts[i];
    return json;
  }
  /// Classes without candidates are left out.
  static Json of(const std::array<Funnel, 5>& funnels) {
    Json json = Json::object();
    for (std::size_t i = 0; i < funnels.size(); ++i) {
      if (funnels[i].candidates > 0) json[classNames[i]] = of(funnels[i]);
    }
    return json;
  }
  template <typename T>
  static Json of(const std::vector<T>& values) {
    Json json = Json::array();
    for (const auto& value : values) json.push_back(of(value));
    return json;
  }
  template <typename Report>
  requires(!std::integral<Report>) static Json of(const Report& report) {
    Writer writer;
    fields(writer, report);
    return writer.json_;
  }

 private:
  Json json_ = Json::object();
};

class Reader {
 public:
  explicit Reader(const Json& json) : json_(json) {}

  template <typename T>
  void operator()(const char* name, T& value) const {
    into(json_.at(name), value);
  }
  template <typename T>
  void operator()(const char* name, std::optional<T>& value) const {
    value.reset();
    if (json_.contains(name)) into(json_.at(name), value.emplace());
  }
  template <typename T>
  void unless(const char* name, T& value, const T& standard) const {
    value = standard;
    if (json_.contains(name)) into(json_.at(name), value);
  }
  bool has(const char* name) const { return json_.contains(name); }

  static void into(const Json& json, double& value) {
    value = json.is_null() ? unknownFigure : json.get<double>();
  }
  template <std::integral T>
  static void into(const Json& json, T& value) {
    value = json.get<T>();
  }
  static void into(const Json& json, std::string& value) { value = json.get<std::string>(); }
  static void into(const Json& json, std::filesystem::path& value) {
    value = json.get<std::string>();
  }
  static void into(const Json& json, std::array<double, 3>& values) {
    for (std::size_t i = 0; i < 3; ++i) into(json.at(i), values[i]);
  }
  static void into(const Json& json, PerClass& counts) {
    for (std::size_t i = 0; i < counts.size(); ++i) into(json.at(classNames[i]), counts[i]);
  }
  static void into(const Json& json, std::array<Funnel, 5>& funnels) {
    for (std::size_t i = 0; i < funnels.size(); ++i) {
      if (json.contains(classNames[i])) into(json.at(classNames[i]), funnels[i]);
    }
  }
  template <typename T>
  static void into(const Json& json, std::vector<T>& values) {
    if (!json.is_array()) throw Json::type_error::create(302, "a list was expected", &json);
    values.clear();
    for (const auto& one : json) into(one, values.emplace_back());
  }
  template <typename Report>
  requires(!std::integral<Report>) static void into(const Json& json, Report& report) {
    const Reader reader(json);
    fields(reader, report);
  }

 private:
  const Json& json_;
};

constexpr const char* schema = "velorn summary";
constexpr int version = 1;

}  // namespace

Json jsonOf(const RasterCounts& counts) {
  return Writer::of(counts);
}

Json jsonOf(const ApartReport& apart) {
  return Writer::of(apart);
}

Json jsonOf(const StripScale& scale) {
  return Writer::of(scale);
}

Json jsonOf(const MatchReport& matching) {
  return Writer::of(matching);
}

Json jsonOf(const RoundReport& round) {
  return Writer::of(round);
}

Json jsonOf(const StabilityReport& stability) {
  return Writer::of(stability);
}

Json jsonOf(const GeoreferencingReport& georeferencing) {
  return Writer::of(georeferencing);
}

Json jsonOf(const RunReport& run) {
  RunReport told = run;  // the model stands once, as seen from the root
  for (auto& round : told.rounds) {
    if (round.adjustment) round.adjustment->files = {};
  }
  if (told.adjustment) told.adjustment->files = {};
  Json json{{"schema", schema}, {"version", version}};
  json.update(Writer::of(told));
  return json;
}

void fromJson(const Json& json, RasterCounts& counts) {
  Reader::into(json, counts);
}

void fromJson(const Json& json, ApartReport& apart) {
  Reader::into(json, apart);
}

void fromJson(const Json& json, StripScale& scale) {
  Reader::into(json, scale);
}

void fromJson(const Json& json, MatchReport& matching) {
  Reader::into(json, matching);
}

void fromJson(const Json& json, RoundReport& round) {
  Reader::into(json, round);
}

void fromJson(const Json& json, StabilityReport& stability) {
  Reader::into(json, stability);
}

void fromJson(const Json& json, GeoreferencingReport& georeferencing) {
  Reader::into(json, georeferencing);
}

void fromJson(const Json& json, RunReport& run) {
  if (json.at("schema") != schema || json.at("version") != version) {
    throw Json::other_error::create(501, "not a summary of this version", &json);
  }
  Reader::into(json, run);
}

}  // namespace Velorn::Flights
