# SPDX-FileCopyrightText: 2026 The Velorn developers
# SPDX-License-Identifier: Apache-2.0
"""WGS84: geographic and earth-centred coordinates, and UTM by Krüger's series to the sixth order (below a micrometre in
the zone; C. F. F. Karney, Transverse Mercator with an accuracy of a few nanometers, 2011, equations 7 to 36).

Angles are radians, lengths metres. Arrays of any one length.
"""
import numpy as np

A = 6378137.0
F = 1.0 / 298.257223563
E2 = F * (2.0 - F)
N = F / (2.0 - F)
K0 = 0.9996
RADIUS = A / (1.0 + N) * (1.0 + N**2 / 4.0 + N**4 / 64.0 + N**6 / 256.0)  # of the circle as long as the meridian

ALPHA = (
    N / 2 - 2 * N**2 / 3 + 5 * N**3 / 16 + 41 * N**4 / 180 - 127 * N**5 / 288 + 7891 * N**6 / 37800,
    13 * N**2 / 48 - 3 * N**3 / 5 + 557 * N**4 / 1440 + 281 * N**5 / 630 - 1983433 * N**6 / 1935360,
    61 * N**3 / 240 - 103 * N**4 / 140 + 15061 * N**5 / 26880 + 167603 * N**6 / 181440,
    49561 * N**4 / 161280 - 179 * N**5 / 168 + 6601661 * N**6 / 7257600,
    34729 * N**5 / 80640 - 3418889 * N**6 / 1995840,
    212378941 * N**6 / 319334400)
BETA = (
    N / 2 - 2 * N**2 / 3 + 37 * N**3 / 96 - N**4 / 360 - 81 * N**5 / 512 + 96199 * N**6 / 604800,
    N**2 / 48 + N**3 / 15 - 437 * N**4 / 1440 + 46 * N**5 / 105 - 1118711 * N**6 / 3870720,
    17 * N**3 / 480 - 37 * N**4 / 840 - 209 * N**5 / 4480 + 5569 * N**6 / 90720,
    4397 * N**4 / 161280 - 11 * N**5 / 504 - 830251 * N**6 / 7257600,
    4583 * N**5 / 161280 - 108847 * N**6 / 3991680,
    20648693 * N**6 / 638668800)


def meridian(zone):
    """The central meridian of a UTM zone."""
    return np.radians(6.0 * zone - 183.0)


def zone_of(longitude):
    return int(np.floor(np.degrees(np.median(longitude)) / 6.0)) + 31


def projected(latitude, longitude, zone):
    """Easting and northing on the northern hemisphere."""
    tau = np.tan(latitude)
    conformal = _conformal(tau)
    east = longitude - meridian(zone)
    xi = np.arctan2(conformal, np.cos(east))
    eta = np.arcsinh(np.sin(east) / np.hypot(conformal, np.cos(east)))
    point = xi + 1j * eta
    point = point + sum(a * np.sin(2 * (j + 1) * point) for j, a in enumerate(ALPHA))
    return 500000.0 + K0 * RADIUS * point.imag, K0 * RADIUS * point.real


def geographic(easting, northing, zone):
    """Latitude and longitude."""
    point = (northing + 1j * (easting - 500000.0)) / (K0 * RADIUS)
    point = point - sum(b * np.sin(2 * (j + 1) * point) for j, b in enumerate(BETA))
    xi, eta = point.real, point.imag
    conformal = np.sin(xi) / np.hypot(np.sinh(eta), np.cos(xi))
    tau = conformal
    for _ in range(4):  # Newton's method
        at = _conformal(tau)
        tau = tau + (conformal - at) / np.hypot(1.0, at) * (1.0 + (1.0 - E2) * tau**2) / (
            (1.0 - E2) * np.hypot(1.0, tau))
    return np.arctan(tau), meridian(zone) + np.arctan2(np.sinh(eta), np.cos(xi))


def _conformal(tau):
    """The tangent of the conformal latitude, of that of the geographic one."""
    e = np.sqrt(E2)
    sigma = np.sinh(e * np.arctanh(e * tau / np.hypot(1.0, tau)))
    return tau * np.hypot(1.0, sigma) - sigma * np.hypot(1.0, tau)


def earth_centred(latitude, longitude, height):
    """[n, 3]"""
    curvature = A / np.sqrt(1.0 - E2 * np.sin(latitude)**2)
    across = (curvature + height) * np.cos(latitude)
    return np.column_stack((across * np.cos(longitude), across * np.sin(longitude),
                            ((1.0 - E2) * curvature + height) * np.sin(latitude)))


def geographic_of_earth_centred(point):
    """Latitude, longitude and height of [n, 3]; Bowring's formula, repeated."""
    longitude = np.arctan2(point[:, 1], point[:, 0])
    across = np.hypot(point[:, 0], point[:, 1])
    polar = A * np.sqrt(1.0 - E2)
    reduced = np.arctan2(A * point[:, 2], polar * across)
    for _ in range(3):
        latitude = np.arctan2(point[:, 2] + E2 / (1.0 - E2) * polar * np.sin(reduced)**3,
                              across - E2 * A * np.cos(reduced)**3)
        reduced = np.arctan((1.0 - F) * np.tan(latitude))
    curvature = A / np.sqrt(1.0 - E2 * np.sin(latitude)**2)
    height = across * np.cos(latitude) + point[:, 2] * np.sin(latitude) - A * A / curvature
    return latitude, longitude, height


def level_axes(latitude, longitude):
    """Axes north, east, down of the local level as the columns of [n, 3, 3], earth-centred."""
    sin_lat, cos_lat, sin_lon, cos_lon = np.sin(latitude), np.cos(latitude), np.sin(longitude), np.cos(longitude)
    north = np.column_stack((-sin_lat * cos_lon, -sin_lat * sin_lon, cos_lat))
    east = np.column_stack((-sin_lon, cos_lon, np.zeros_like(sin_lon)))
    down = np.column_stack((-cos_lat * cos_lon, -cos_lat * sin_lon, -sin_lat))
    return np.stack((north, east, down), axis=2)
