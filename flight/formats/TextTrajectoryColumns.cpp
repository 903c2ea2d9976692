// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/TextTrajectoryColumns.h"

#include <algorithm>

#include <fmt/format.h>

#include "flight/formats/DelimitedText.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

using Q = TrajectoryQuantity;

[[noreturn]] void refuse(const std::string& description, const std::string& fault) {
  throw Error(
      fmt::format("the columns \"{}\" of the trajectory: {}; they are named as in \"time latitude "
                  "longitude height roll pitch heading\" or \"time easting northing height roll "
                  "pitch heading\", with - for a column to pass over",
                  shown(description), fault));
}

/// Every quantity is there, and the position in one way.
void checkComplete(const TrajectoryColumnPlaces& places, const std::string& description) {
  const bool geographic = places[Q::Latitude] || places[Q::Longitude];
  if (geographic && (places[Q::Easting] || places[Q::Northing])) {
    refuse(description,
           "the position is there as geographic and as projected coordinates; name "
           "one of them -");
  }
  const auto needed =
      geographic ? std::array{Q::Latitude, Q::Longitude} : std::array{Q::Easting, Q::Northing};
  for (const Q::Place place :
       {Q::Time, needed[0], needed[1], Q::Height, Q::Roll, Q::Pitch, Q::Heading}) {
    if (places[place]) continue;
    refuse(description, fmt::format("{} is missing", trajectoryQuantities[place].name));
  }
}

}  // namespace

TrajectoryColumnPlaces columnPlacesOf(const std::string& description) {
  std::string parted = description;
  std::replace(parted.begin(), parted.end(), ',', ' ');
  TrajectoryColumnPlaces places;
  const auto words = wordsOf(parted, ' ');
  for (std::size_t column = 0; column < words.size(); ++column) {
    if (words[column] == "-") continue;
    const auto quantity = std::find_if(trajectoryQuantities.begin(), trajectoryQuantities.end(),
                                       [&](const auto& q) { return words[column] == q.name; });
    const std::string quoted = fmt::format("\"{}\"", words[column]);
    if (quantity == trajectoryQuantities.end()) refuse(description, quoted + " is no quantity");
    auto& place = places[static_cast<std::size_t>(quantity - trajectoryQuantities.begin())];
    if (place) refuse(description, quoted + " is there twice");
    place = column;
  }
  checkComplete(places, description);
  return places;
}

}  // namespace Velorn::Flights
