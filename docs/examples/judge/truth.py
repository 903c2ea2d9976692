# SPDX-FileCopyrightText: 2026 The Velorn developers
# SPDX-License-Identifier: Apache-2.0
"""The truth of the flight `city`: what its truth.json says was done to the trajectory and the mounting."""
import dataclasses
import json
import pathlib

import numpy as np

from judge import geodesy
from judge.sensor import Mounting


class Truth:
    def __init__(self, path):
        self.known = json.loads(pathlib.Path(path).read_text())
        self.lever_arm = np.array(self.known["lever_arm_FRD_m"])
        self.mounting = Mounting(self.lever_arm, np.radians(self.known["boresight_roll_pitch_yaw_deg"]))
        self.delivered_mounting = Mounting(self.lever_arm, np.zeros(3))

    def trajectory(self, delivered, strip):
        """The delivered trajectory without the errors of a strip, counted from 0: they were added in the local level."""
        error = self.known["trajectory_perturbation"][strip]
        share = np.clip((delivered.time - error["t_mid"]) / error["t_half"], -1.0, 1.0)
        wrong = {key: error["bias"][key] + share * error["drift_half"][key] for key in error["bias"]}
        axes = geodesy.level_axes(delivered.latitude, delivered.longitude)
        level = -np.column_stack((wrong["N"], wrong["E"], -wrong["h"]))
        point = geodesy.earth_centred(delivered.latitude, delivered.longitude, delivered.height)
        place = geodesy.geographic_of_earth_centred(point + np.einsum("nij,nj->ni", axes, level))
        return dataclasses.replace(
            delivered, latitude=place[0], longitude=place[1], height=place[2],
            roll=delivered.roll - np.radians(wrong["roll"]), pitch=delivered.pitch - np.radians(wrong["pitch"]),
            heading=delivered.heading - np.radians(wrong["heading"]))
