// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/correspondence/LoadedBundle.h"

#include "platform/morvane/Console.h"

namespace Velorn {

Strandel::BundlePtr loadedBundle(const std::filesystem::path& path,
                                 const Strandel::MyStorage* storage) {
  auto bundle = std::make_shared<Strandel::Bundle>();
  const std::string fault =
      storage ? storage->load(path, *bundle) : path.string() + ": there is no storage to load it";
  if (fault.empty()) return bundle;
  Morvane::Console::writeLine("myGlobalBP:  failure: " + fault);
  return {};
}

}  // namespace Velorn
