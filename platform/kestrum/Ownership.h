// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The platform's names for shared ownership; each is an alias of the standard library's smart
// pointer.
#pragma once

#include <memory>

namespace Kestrum {

/// Base of everything that is handled through an interface.
class InterfaceBase {
 public:
  InterfaceBase() = default;
  InterfaceBase(const InterfaceBase&) = default;
  InterfaceBase& operator=(const InterfaceBase&) = default;
  virtual ~InterfaceBase() = default;
};

/// Shares ownership of a T; empty by default. `Base` names the base class through which T is
/// counted.
template <typename T, typename Base = InterfaceBase>
using StrongPtr = std::shared_ptr<T>;

/// Observes a T without keeping it alive; assignable from a StrongPtr.
template <typename T, typename Base = InterfaceBase>
using WeakPtr = std::weak_ptr<T>;

/// Shares ownership of a T that derives from ReferenceBase<T>.
template <typename T>
using DynPtr = std::shared_ptr<T>;

/// Base of a class that hands out shared pointers to itself.
template <typename T>
using ReferenceBase = std::enable_shared_from_this<T>;

}  // namespace Kestrum
