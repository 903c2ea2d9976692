# SPDX-FileCopyrightText: 2026 The Velorn developers
# SPDX-License-Identifier: Apache-2.0
"""From the scanner to the world and back, by formulas of its own: what judges a program must not be that program.

Scanner coordinates: s0 down, s1 forward, s2 right. Body: x forward, y right, z down. Attitudes are roll, pitch and true
heading, R = Rz(heading) Ry(pitch) Rx(roll), in the local level north, east, down. World: UTM and ellipsoidal height.
"""
import dataclasses

import numpy as np

from judge import geodesy


def rotation(roll, pitch, yaw):
    """Rz(yaw) Ry(pitch) Rx(roll), [n, 3, 3]; angles in radians."""
    roll, pitch, yaw = np.broadcast_arrays(np.atleast_1d(roll), pitch, yaw)
    sr, cr, sp, cp, sy, cy = np.sin(roll), np.cos(roll), np.sin(pitch), np.cos(pitch), np.sin(yaw), np.cos(yaw)
    return np.stack((np.column_stack((cy * cp, cy * sp * sr - sy * cr, cy * sp * cr + sy * sr)),
                     np.column_stack((sy * cp, sy * sp * sr + cy * cr, sy * sp * cr - cy * sr)),
                     np.column_stack((-sp, cp * sr, cp * cr))), axis=1)


@dataclasses.dataclass
class Trajectory:
    """Times [s of week, or any], latitude, longitude, roll, pitch, heading [rad], height [m]; linear between records."""
    time: np.ndarray
    latitude: np.ndarray
    longitude: np.ndarray
    height: np.ndarray
    roll: np.ndarray
    pitch: np.ndarray
    heading: np.ndarray

    def at(self, time):
        values = (self.latitude, self.longitude, self.height, self.roll, self.pitch, np.unwrap(self.heading))
        return Trajectory(time, *(np.interp(time, self.time, value) for value in values))

    def attitude(self):
        return rotation(self.roll, self.pitch, self.heading)


@dataclasses.dataclass
class Mounting:
    """Lever arm [m], misalignment [rad], offsets of range [m] and angles [rad], scales as deviations from one."""
    lever_arm: np.ndarray
    misalignment: np.ndarray
    offset: np.ndarray = dataclasses.field(default_factory=lambda: np.zeros(3))
    scale: np.ndarray = dataclasses.field(default_factory=lambda: np.zeros(3))

    def matrix(self):
        return rotation(*self.misalignment)[0]

    def body(self, scanner):
        """The corrected measurements as seen from the trajectory's reference, [n, 3]."""
        distance = np.linalg.norm(scanner, axis=1)
        polar = np.column_stack((distance, np.arcsin(scanner[:, 1] / distance), np.arctan2(scanner[:, 0], scanner[:, 2])))
        r, forward, across = ((1.0 + self.scale) * polar + self.offset).T
        point = np.column_stack((r * np.sin(forward), r * np.cos(forward) * np.cos(across),
                                 r * np.cos(forward) * np.sin(across)))
        return point @ self.matrix().T + self.lever_arm


def world(scanner, time, trajectory, mounting, zone):
    """Easting, northing, height of the measurements, [n, 3]."""
    pose = trajectory.at(time)
    level = np.einsum("nij,nj->ni", pose.attitude(), mounting.body(scanner))
    axes = geodesy.level_axes(pose.latitude, pose.longitude)
    origin = geodesy.earth_centred(pose.latitude, pose.longitude, pose.height)
    latitude, longitude, height = geodesy.geographic_of_earth_centred(origin + np.einsum("nij,nj->ni", axes, level))
    return np.column_stack((*geodesy.projected(latitude, longitude, zone), height))


def scanner(world_points, time, trajectory, mounting, zone):
    """The inverse of `world` for a mounting without offsets and scales."""
    pose = trajectory.at(time)
    latitude, longitude = geodesy.geographic(world_points[:, 0], world_points[:, 1], zone)
    beam = (geodesy.earth_centred(latitude, longitude, world_points[:, 2]) -
            geodesy.earth_centred(pose.latitude, pose.longitude, pose.height))
    level = np.einsum("nji,nj->ni", geodesy.level_axes(pose.latitude, pose.longitude), beam)
    body = np.einsum("nji,nj->ni", pose.attitude(), level)
    x, y, z = ((body - mounting.lever_arm) @ mounting.matrix()).T
    return np.column_stack((z, x, y))
