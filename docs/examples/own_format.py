#!/usr/bin/python3
"""Writes two crossing strips, their trajectory and ground truth as containers: a frame for readers of other formats.

    docs/examples/own_format.py FOLDER

Replace flight() and terrain() by what reads your files; docs/own-formats.md says what each field means.
"""
import pathlib
import sys

import h5py
import numpy as np

WEEK, EPSG = 2318, 32632
W, S = "StandardCartesianChart3D", "ScannerCoordinateSystem"
random = np.random.default_rng(1)


def container(path):
    """A file with one grid and its world chart; the file, the grid, the chart."""
    file = h5py.File(path, "w", libver=("v110", "v110"))
    file.attrs["format"] = np.bytes_("kx")
    file.attrs["version"] = 1
    file.create_group("0").attrs["time"] = 0.0
    grid = file.create_group("0/grid")
    return file, grid, grid.create_group(W)


def add(chart, name, value_type, values):
    field = chart.create_group(name)
    field.attrs["value_type"] = np.bytes_(value_type)
    field.create_dataset("0", data=values, chunks=(min(len(values), 40000),) + values.shape[1:], fletcher32=True)


def write_strip(path, time, world):
    n = len(time)
    file, grid, w = container(path)
    with file:
        grid.attrs["WeekNumber"] = WEEK
        add(w, "Positions", "point", world)                          # easting, northing, ellipsoidal height
        add(w, "GPSTime", "double", time)                            # seconds of the week
        add(w, "ReturnNumber", "uint8", np.ones(n, "u1"))
        add(w, "NumberOfReturns", "uint8", np.ones(n, "u1"))
        add(w, "Classification", "uint8", np.full(n, 2, "u1"))       # as in LAS: 2 ground, 6 building
        add(w, "Amplitude", "double", np.zeros(n))
        s = grid.create_group(S)
        s["GPSTime"] = w["GPSTime"]                                  # a hard link: one field in both charts
        add(s, "Positions", "point", np.zeros((n, 3)))               # down, forward, right: velorn computes them


def write_trajectory(path, time, position, attitude):
    file, _, w = container(path)
    with file:
        w.attrs["WeekNumber"] = WEEK
        w.attrs["EPSG_SPATIAL"] = EPSG
        w.attrs["EPSG_HEIGHT"] = 0                                   # heights are ellipsoidal
        w.attrs["LeverArm"] = np.array([0.12, -0.08, 0.45])          # forward, right, down
        w.attrs["Misalignment"] = np.zeros(3)                        # roll, pitch, yaw, degrees
        add(w, "Positions", "point", position)
        add(w, "GPSTime", "double", time)
        for name, values in zip(["Roll", "Pitch", "Yaw"], attitude.T):
            add(w, name, "double", np.ascontiguousarray(values))     # degrees; yaw from true north, without jumps


def write_ground_truth(path, world, normals):
    file, _, w = container(path)
    with file:
        add(w, "Positions", "point", world)
        add(w, "NormalVector", "vector", normals)                    # unit, upward
        add(w, "Classification", "uint8", np.full(len(world), 2, "u1"))


def terrain(east, north):
    """Height above the ellipsoid of a landscape of slopes of 15 degrees, and its upward normals."""
    east, north = np.broadcast_arrays(east, north)
    saw = [np.abs((x / 30.0) % 2.0 - 1.0) * 30.0 for x in (east, north)]
    sign = [np.where((x / 30.0) % 2.0 < 1.0, -1.0, 1.0) for x in (east, north)]
    slope = np.tan(np.radians(15.0)) / np.sqrt(2.0)
    normals = np.stack([-slope * sign[0], -slope * sign[1], np.ones(east.shape)], axis=-1)
    return 450.0 + slope * (saw[0] + saw[1]), normals / np.linalg.norm(normals, axis=-1, keepdims=True)


def flight(start, along, first_time, count):
    """Times and world points of a strip of 300 m by 200 m with 2 cm of noise in height."""
    time = first_time + 6.0 * np.arange(count) / count
    run, side = 50.0 * (time - first_time), random.uniform(-100.0, 100.0, count)
    east, north = start[0] + run * along[0] + side * along[1], start[1] + run * along[1] - side * along[0]
    return time, np.stack([east, north, terrain(east, north)[0] + random.normal(0.0, 0.02, count)], axis=-1)


def main():
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    centre, poses = np.array([500000.0, 5316300.0]), []
    for name, along, first_time in (("east", (1.0, 0.0), 1000.0), ("north", (0.0, 1.0), 1100.0)):
        start = centre - 150.0 * np.array(along)
        time, world = flight(start, along, first_time, 30000)
        world += [0.0, 0.0, 0.1 if name == "north" else 0.0]         # what the adjustment is to find
        write_strip(folder / f"{name}.kx", time, world)
        record = first_time - 1.0 + 0.005 * np.arange(1601)          # a record every 5 ms, from a second before
        place = start + 50.0 * (record - first_time)[:, None] * np.array(along)
        yaw = np.full(len(record), 90.0 if along[0] else 0.0)
        poses.append((record, np.column_stack([place, np.full(len(record), 950.0)]),
                      np.column_stack([np.zeros((len(record), 2)), yaw])))
    write_trajectory(folder / "trajectory.kx", *map(np.concatenate, zip(*poses)))

    east, north = (centre[:, None, None] + np.meshgrid(np.arange(-80.0, 81.0, 20.0) + 7.0, np.arange(-80.0, 81.0, 20.0) + 8.0))
    spread = np.arange(-1.0, 1.1, 0.5)                               # patches of 25 points, 2 m wide
    east = (east.reshape(-1, 1, 1) + spread[:, None] + 0.0 * spread).ravel()
    north = (north.reshape(-1, 1, 1) + 0.0 * spread[:, None] + spread).ravel()
    height, normals = terrain(east, north)
    write_ground_truth(folder / "ground_truth.kx", np.stack([east, north, height], axis=-1), normals)


main()
