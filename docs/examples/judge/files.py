# SPDX-FileCopyrightText: 2026 The Velorn developers
# SPDX-License-Identifier: Apache-2.0
"""Readers of LAS, SBET, control points, blocks of correspondences, adjusted strips and an exported mounting."""
import csv
import dataclasses
import json
import pathlib
import struct

import h5py
import numpy as np

from judge.sensor import Mounting, Trajectory

WEEK = 604800.0


@dataclasses.dataclass
class Points:
    time: np.ndarray   # [s of week]
    world: np.ndarray  # [n, 3] easting, northing, height


def las(path):
    """The points of a LAS file of 1.0 to 1.4 with adjusted standard GPS time, in the order of its records."""
    content = pathlib.Path(path).read_bytes()
    offset, = struct.unpack_from("<I", content, 96)
    form, size, count = struct.unpack_from("<BHI", content, 104)
    if content[25] >= 4:
        count, = struct.unpack_from("<Q", content, 247)
    scale, shift = np.frombuffer(content, "<f8", 6, 131).reshape(2, 3)
    records = np.frombuffer(content, np.uint8, count * size, offset).reshape(count, size)
    coordinates = np.ascontiguousarray(records[:, :12]).view("<i4") * scale + shift
    at = 22 if form >= 6 else 20
    time = np.ascontiguousarray(records[:, at:at + 8]).view("<f8")[:, 0]
    return Points((time + 1e9) % WEEK, coordinates)


def sbet(path):
    """The wander angle counts as zero or as taken off."""
    records = np.fromfile(path, "<f8").reshape(-1, 17)
    latitude, longitude, height = records[:, 1:4].T
    roll, pitch, heading = records[:, 7:10].T
    return Trajectory(records[:, 0], latitude, longitude, height, roll, pitch, heading - records[:, 10])


def control(path):
    """Centres and unit normals of the patches, [n, 3] each."""
    with open(path, newline="") as file:
        rows = list(csv.DictReader(file))
    read = lambda names: np.array([[float(row[name]) for name in names] for row in rows])
    return read(("E", "N", "h")), read(("nx", "ny", "nz"))


def mounting(path):
    """What `velorn export` writes as mounting.json."""
    found = json.loads(pathlib.Path(path).read_text())
    arm, angles, offset, scale = (found[key] for key in ("lever_arm", "misalignment", "offset", "scale"))
    return Mounting(np.array([arm["forward_m"], arm["right_m"], arm["down_m"]]),
                    np.radians([angles["roll_deg"], angles["pitch_deg"], angles["yaw_deg"]]),
                    np.array([offset["range_m"], *np.radians([offset["angle_1_deg"], offset["angle_2_deg"]])]),
                    np.array([scale["range"], scale["angle_1"], scale["angle_2"]]))


@dataclasses.dataclass
class Side:
    """One side of correspondences, of one strip."""
    strip: int
    world: np.ndarray    # [n, 3] as delivered, moved onto planes
    scanner: np.ndarray  # [n, 3]
    time: np.ndarray
    normal: np.ndarray   # [n, 3]


def pairs(folder):
    """The blocks of strip pairs: a list of two sides each."""
    found = []
    for path in sorted(pathlib.Path(folder).glob("c*_*.kx")):
        if "GroundTruth" not in path.name:
            strips = [int(part) for part in path.stem[1:].split("_")]
            with h5py.File(path) as file:
                found.append([_side(file, grid, strip) for grid, strip in zip(("Grid_I", "Grid_J"), strips)])
    return found


def _side(file, grid, strip):
    read = lambda field: file[f"0/{grid}/StandardCartesianChart3D/{field}/0"][:]
    return Side(strip, read("Positions"), read("ScannerCoordiantes"), read("GPSTime"), read("NormalVector"))


def surfaces(adjusted, planar):
    """The surface class of each record of the LAS file that an adjusted strip came from; 0: none."""
    index = _column(adjusted, "SourceIndex")
    found = np.zeros(int(index.max()) + 1, np.uint8)
    found[index[_column(planar, "PointNumber")]] = _column(planar, "RigorousClassification")
    return found


def _column(path, field):
    with h5py.File(path) as file:
        fragments = next(iter(file["0"].values()))[f"StandardCartesianChart3D/{field}"]
        return np.concatenate([fragments[name][:] for name in sorted(fragments, key=int)])
