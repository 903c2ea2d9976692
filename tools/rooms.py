"""The rooms of the house: what each holds, and whom it may include. The one table that tools/check-includes and
tools/draw-rooms read.

Floors and their rooms stand from the bottom up: a room may include rooms that stand before it, and only those it names.
"""
from typing import NamedTuple

# Folders of exported headers. What the platform holds is all for others.
EXPORTED = {"adjustment": "include/velorn", "flight": "include/velorn/flight"}


class Room(NamedTuple):
    name: str  # its folder; a floor's own name for files that stand beside its rooms
    holds: str
    may: list  # the rooms of its floor that it may include, and floors that the others of its floor do not see


class Floor(NamedTuple):
    name: str
    makes: str
    holds: str
    sees: list  # the floors below whose exported headers all its rooms may include
    rooms: list


FLOORS = []


def floor(name, makes, holds, sees, rooms):
    """Adds a floor; its rows call the rooms without the floor's name, and separate those they may include by blanks."""
    below = [other.name for other in FLOORS]
    added = []
    for room, sentence, may in rooms:
        room, *may = (word if word in [*below, name] else f"{name}/{word}" for word in [room, *may.split()])
        assert set(may) <= {*below, *(other.name for other in added)}, f"{room} stands before a room that it may include"
        added.append(Room(room, sentence, may))
    FLOORS.append(Floor(name, makes, holds, sees, added))


floor("platform", "libvelorn_platform", "what a host gives the adjustment", [], [
    ("platform", "the mark of what is exported", ""),
    ("geomra", "points and vectors of physical space", "platform"),
    ("kestrum", "ownership, progress reports", "platform"),
    ("morvane", "the console", "platform"),
    ("plome", "lists of words, the clock as text, files that are replaced whole", "platform"),
    ("strandel", "bundles, grids, charts, fields and the `.kx` container; alone knows HDF5",
     "platform geomra kestrum morvane plome"),
    ("tessaly", "ellipsoid, projections, coordinate conversions; alone knows GeographicLib",
     "platform geomra kestrum morvane plome"),
    ("orvek", "statistics and plots; alone knows gnuplot", "platform geomra kestrum morvane plome"),
])
floor("adjustment", "libvelorn", "from correspondences to corrections and georeferenced strips", ["platform"], [
    ("config", "enumerations and their texts, run configuration, list of input files", ""),
    ("model", "time sections of strips, the vector of unknowns, their files", "config"),
    ("trajectory", "import of trajectories; position and attitude at a GPS time", "config"),
    ("correspondence", "blocks of correspondences and their files; attributes of points", "config"),
    ("georef", "the sensor model: formulas over any scalar, lists of points, whole strips", "config model trajectory"),
    ("engine", "fast sums over correspondences: derivatives by the adjoint, vector kernels, condensed chunks",
     "config model trajectory correspondence georef"),
    ("stochastics", "a priori knowledge as rows, variance components, design effect: mathematics alone", "config model georef"),
    ("observability", "what is determined, and how reliably, from normal matrices: mathematics alone", "model engine stochastics"),
    ("statistics", "how well strips fit before and after, and how far they moved",
     "config model trajectory correspondence georef"),
    ("optimization", "residual, check of the correspondences, solver run; alone knows Ceres",
     "config model trajectory correspondence georef engine stochastics observability statistics"),
])
floor("flight", "libvelorn_flight", "from a user's files to adjusted files", ["platform", "adjustment"], [
    ("strips", "containers as columns of points, names of blocks, where files go; loops on all threads", ""),
    ("settings", "what a user can set: names, bounds, defaults", "strips"),
    ("formats", "LAS, SBET, text trajectories and control, read and written; alone knows GDAL", "strips"),
    ("simulation", "the synthetic flight, every error of which is known", "strips formats"),
    ("surfaces", "planes, roughness, classes; the raster of each strip", "strips settings"),
    ("matching", "which points of two strips correspond: plan, search, gates, thinning", "strips settings surfaces"),
    ("records", "the folder of a run and what its steps leave", "strips settings surfaces matching"),
    ("report", "summary and listings, for people and as JSON", "strips settings formats records"),
    ("exchange", "import and export: from files of the field to containers, and back", "strips settings formats records"),
    ("comparison", "how far a result is from the truth of a synthetic flight", "strips settings formats simulation records"),
    ("chain", "the order of the steps, rounds, restart", "strips settings formats surfaces matching records report"),
])
floor("host", "velorn", "the program: words typed, words printed", ["adjustment", "flight"], [
    ("host", "exit statuses, what the process does with memory", ""),
    ("terminal", "progress on a terminal and in a log, Ctrl-C", "platform"),
    ("commandline", "the table of commands and what is told of it: help, manual page, completion, the nearest word", ""),
    ("project", "settings as flags, as keys of project files, as a page; alone knows toml++", "host commandline"),
    ("commands", "one file per command", "platform host terminal commandline project"),
    ("main.cpp", "puts the commands together", "platform host terminal commandline project commands"),
])

# Include of a foreign library -> the floors and rooms that may know it. Exported headers know none.
LIBRARIES = {
    r"(hdf5|H5\w*)(\.h|/)": ["platform/strandel"],
    r"GeographicLib/": ["platform/tessaly"],
    r"(ceres|glog)/": ["adjustment/optimization"],
    r"(gdal|ogr|cpl)_?\w*\.h": ["flight/formats"],
    r"muParser\w*\.h": ["flight/surfaces"],
    r"nanoflann\.hpp": ["flight/surfaces"],
    r"nlohmann/": ["flight/records", "flight/report", "flight/simulation", "flight/comparison", "flight/exchange"],
    r"CLI/": ["host"],
    r"toml\+\+/": ["host/project"],
    r"xsimd/": ["adjustment/engine"],
    r"Eigen/": ["adjustment", "flight"],
}

ROOMS = {room.name: room for floor in FLOORS for room in floor.rooms}
