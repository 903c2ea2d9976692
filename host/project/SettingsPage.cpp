// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/project/SettingsPage.h"

#include <type_traits>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <velorn/flight/SettingsTable.h>

using namespace Velorn::Flights;

namespace {

constexpr const char* head = R"(# Settings

<!-- tools/write-settings writes this page -->

Every setting is a flag of `velorn run` (`--search-radius 5`) and a key of a project file (`search-radius = 5`); flags win.
`velorn init flight.velorn` writes a project file with every key, and with the flags that it is given as values.

```toml
strips = ["strips/*.kx", "more/left strip.kx"]  # * and ? stand for any letters and any letter, brackets mean themselves
trajectory = ["trajectory.kx"]
ground-truth = "control.kx"
selection = "Amplitude > 20 and not PointSourceID == 3"
weights = [3, 1, 1, 1, 1]
```

A project file is [TOML](https://toml.io) without sections: texts in quotes, lists in brackets (one entry goes without), `#`
begins a comment. Relative paths count from the folder of the file; those of flags from where you are. Lists of a flag have
commas (`--weights 3,1,1,1,1`), the words of `--steps` blanks; `--ground-truth ""` leaves a project's out. Files of version
0.1, whose words had no quotes, are read as well.

A setting that changes makes a run do the steps of the last column again, and those that build on their results; all others
are skipped. Lists "per class" are in the order ground truth, roof, slope, bed, flat.
)";

bool isNumeric(const Setting& setting, FlightSettings settings) {
  return std::visit(
      [](const auto* value) {
        using Type = std::decay_t<decltype(*value)>;
        using std::is_same_v;
        return is_same_v<Type, std::vector<int>> || is_same_v<Type, std::vector<double>> ||
               (std::is_arithmetic_v<Type> && !is_same_v<Type, bool>);
      },
      setting.place(settings));
}

std::string boundsOf(const Setting& setting) {
  if (!setting.words.empty()) return fmt::format("{}", fmt::join(setting.words, ", "));
  if (!isNumeric(setting, {})) return "";
  const auto bounds =
      fmt::format("{}{} to {}", setting.followsPoints ? "0, " : "", setting.low, setting.high);
  return setting.entries > 0 ? fmt::format("{} numbers, {}", setting.entries, bounds) : bounds;
}

std::string stepsOf(const Setting& setting) {
  std::vector<std::string> names;
  for (const Step step : setting.steps) names.emplace_back(nameOf(step));
  return fmt::format("{}", fmt::join(names, ", "));
}

std::string rowOf(const Setting& setting) {
  return fmt::format("| `{}` | {} | {} | {} | {} | {} |\n", setting.name, setting.sentence,
                     setting.unit, valueText(setting, {}), boundsOf(setting), stepsOf(setting));
}

/// What stands under the title of some groups.
std::string noteOf(const Setting& setting) {
  if (setting.use != SettingUse::Code) return {};
  return "\nNeither flags nor keys: members of `configuration()` that a host of the library may "
         "set.\n";
}

}  // namespace

std::string settingsPage() {
  std::string text = head, group;
  for (const auto& setting : settingsTable()) {
    if (setting.group != group) {
      group = setting.group;
      text += fmt::format(
          "\n## {}\n{}\n| setting | | unit | default | bounds | done again "
          "|\n|---|---|---|---|---|---|"
          "\n",
          group, noteOf(setting));
    }
    text += rowOf(setting);
  }
  return text;
}
