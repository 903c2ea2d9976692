// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// From scanner coordinates to world coordinates and back, for lists of points and for whole strips.
//
//     const std::string fault = Velorn::scanner2world(parameters, trajectory, scanner, times, week,
//                                                     strip, world, directions, 0.0, false);
//
// The sensor model: with the trajectory's position p and attitude a at the time t of a measurement
// s, the section (k, t0) of t and dt = t - t0,
//
//     a' = a + A0 + A1 dt + A2 dt^2 + A3 dt^3      corrected attitude [rad]
//     p' = p + P0 + P1 dt + P2 dt^2 + P3 dt^3      corrected position, projected, with height [m]
//     q' = (1 + c) q + o                           q: polar form of s (range and two angles)
//     n  = R(a') (R(m) S s(q') + l)                vector to the point: north, east, down [m]
//     X  = X(p') + C n                             earth-centred, C: local level at the sensor
//
// and the world point w is X in the projection of the trajectory. The corrections A and P belong to
// the section; offsets o, scales c, misalignment m and lever arm l are common to all strips. S
// turns the scanner's axes (down, forward, right) into the body's (forward, right, down), and R(x,
// y, z) = Rz(z) Ry(y) Rx(x). All times are GPS seconds of week, all heights ellipsoidal.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"
#include "platform/kestrum/LoaderProgress.h"
#include "platform/kestrum/Ownership.h"
#include <velorn/SolverParameters.h>
#include <velorn/Trajectory.h>
#include <velorn/Visibility.h>

namespace Velorn {

/// World coordinates of measurements of one strip. The full cubic of the section's corrections is
/// evaluated whatever its type; a type's unused terms hold zero. Works on all threads that OpenMP
/// has.
/// @param scannerPoints      (s0 down, s1 forward, s2 right) [m]
/// @param gpsTimes           one per point [s of week]; a strip in order of time is the fastest
/// @param weekNumber         GPS week
/// @param stripId            place of the strip in the list of strips
/// @param worldPoints        in: one per point; out: (easting, northing, height) [m]
/// @param directions         in: one per point; out: from the point to the corrected sensor
///                           position, in the projection: of full length [m] when directionLength
///                           is 0, else of that length, and reversed for a negative one; not finite
///                           where point and sensor coincide
/// @param interpolationFlag  a time before the trajectory's first record or on it is a failure and
///                           is told on the console; the point is computed all the same
/// @return empty, or "Error in scanner2world: Code: " and one of the codes that arose, the last one
///         set: 1 the trajectory has no position for a time (which the point then takes to be the
///         origin of the projection), 2 a time lies in no section of the strip (corrections count
///         as zero), 3 a point has no geographic coordinates (a coordinate that is not finite). All
///         points are computed all the same. Vectors of unequal length, and parameters without
///         sections, are refused with a message of another wording; nothing is written then.
VELORN_EXPORT std::string scanner2world(
    const SolverParameters& parameters, const Trajectory& trajectory,
    const std::vector<Geomra::PhysicalSpace::point>& scannerPoints,
    const std::vector<double>& gpsTimes, const unsigned& weekNumber, const unsigned& stripId,
    std::vector<Geomra::PhysicalSpace::point>& worldPoints,
    std::vector<Geomra::PhysicalSpace::vector>& directions, const double& directionLength,
    const bool& interpolationFlag);

/// Scanner coordinates of world points, with lever arm and misalignment only: the inverse of
/// scanner2world where all other corrections are zero. A time for which the trajectory has no
/// position is taken at the origin of the projection. Works on all threads that OpenMP has.
/// @param scannerPoints  in: one per point; out: (s0 down, s1 forward, s2 right) [m]
/// @param gpsTimes       one per point [s of week]
/// @param weekNumber     GPS week
/// @param stripId        not read
/// @param worldPoints    (easting, northing, height) [m]
/// @return empty; vectors of unequal length are refused with a message, nothing is written then
VELORN_EXPORT std::string world2scanner(
    const SolverParameters& parameters, const Trajectory& trajectory,
    std::vector<Geomra::PhysicalSpace::point>& scannerPoints, const std::vector<double>& gpsTimes,
    const unsigned& weekNumber, const unsigned& stripId,
    const std::vector<Geomra::PhysicalSpace::point>& worldPoints);

/// Georeferences one strip container: world points and directions from scanner points or, inverse,
/// scanner points from world points.
/// @param stripFile          container with one grid
/// @param stripIndex         place of the strip in the list of strips
/// @param outputFolder       where "<stem>_SA.kx" is written; empty: the container is changed
/// @param storageMode        of newly written data: 0 plain, 1 compressed
/// @param interpolationFlag  as above
/// @return empty, or one message. A strip with a message is saved all the same, with what was
///         computed, and "ERROR_SCANNER2WORLD_<stem>.txt" beside the output holds the message; that
///         file goes when the strip is right. Nothing is saved of one that memory was too short
///         for. A container that cannot be read or written stays as it was; the console is told why
///         one cannot be read. Throws nothing.
VELORN_EXPORT std::string scanner2world(const SolverParameters& parameters,
                                        const Trajectory& trajectory, const std::string& stripFile,
                                        const unsigned& stripIndex, const std::string& outputFolder,
                                        const bool& inverse, const int& storageMode,
                                        const bool& interpolationFlag);

/// The same for the strips of a list, in its order.
/// @param sectionFile, parameterFile  empty; with a name the PROCESS ENDS with exit status 1, see
///                           SolverParameters::readSectionsAndParameter. The corrections are then
///                           lever arm and misalignment of the trajectory.
/// @param selectedStrips     places in the list; empty: all
/// @param progress           told "scan2World #", the strip's place and their number; may be empty
/// @return empty, or the message of the first strip that has one; no strip after it is touched. An
///         output that would replace a strip of the list, or the output of another one, is refused
///         before any of them is touched. Throws nothing.
VELORN_EXPORT std::string scanner2world(
    const std::vector<std::filesystem::path>& stripFiles,
    const std::vector<std::filesystem::path>& trajectoryFiles, const std::string& outputFolder,
    const bool& inverse, const int& storageMode, const std::string& sectionFile,
    const std::string& parameterFile, const std::set<int>& selectedStrips,
    const bool& interpolationFlag,
    const Kestrum::StrongPtr<Kestrum::LoaderProgress, Kestrum::InterfaceBase>& progress);

}  // namespace Velorn
