# SPDX-FileCopyrightText: 2026 The Velorn developers
# SPDX-License-Identifier: Apache-2.0
"""What the judges measure, in metres and degrees."""
import numpy as np


def nmad(values):
    """1.4826 times the median absolute deviation from the median: the standard deviation of normal errors."""
    return 1.4826 * np.median(np.abs(values - np.median(values)))


def along(normal, first, second):
    return np.einsum("ni,ni->n", normal, second - first)


def patch_distances(world, centre, normal, radius=1.0, depth=0.5):
    """Distances from a patch's plane of the points on it: within the radius along the plane and the depth across it."""
    near = world[np.abs(world[:, :2] - centre[:2]).max(axis=1) < radius + depth] - centre
    distance = near @ normal
    beside = np.linalg.norm(near - distance[:, None] * normal, axis=1)
    return distance[(beside <= radius) & (np.abs(distance) <= depth)]


def small_rotation(matrices):
    """The rotations about x, y, z [deg] of matrices near to one, [n, 3]."""
    return np.degrees(0.5 * np.column_stack((matrices[:, 2, 1] - matrices[:, 1, 2], matrices[:, 0, 2] - matrices[:, 2, 0],
                                             matrices[:, 1, 0] - matrices[:, 0, 1])))
