#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Opens a map written by AstropySample.cpp with astropy and compares it with what that program meant.

Usage: astropy_check.py WRITER. Exit status 77 (skipped) where astropy is not installed.
"""
import math
import subprocess
import sys
import tempfile
import warnings

try:
    from astropy import units
    from astropy.io import fits
    from astropy.wcs import WCS
except ImportError:
    print("astropy is not installed")
    sys.exit(77)


def sin_position(x_arcsec, y_arcsec, ra0, dec0):
    """Right ascension and declination (degrees) of the tangent-plane offsets x (east) and y (north) in the
    orthographic projection (Calabretta & Greisen 2002, section 5.1.5)."""
    l, m = math.radians(x_arcsec / 3600), math.radians(y_arcsec / 3600)
    n = math.sqrt(1 - l * l - m * m)
    dec0 = math.radians(dec0)
    dec = math.asin(m * math.cos(dec0) + n * math.sin(dec0))
    ra = math.radians(ra0) + math.atan2(l, n * math.cos(dec0) - m * math.sin(dec0))
    return math.degrees(ra), math.degrees(dec)


def check(path):
    with fits.open(path) as hdus:
        hdus.verify("exception")
        assert len(hdus) == 1
        header, data = hdus[0].header, hdus[0].data
    assert data.shape == (1, 1, 6, 8)
    assert header["BITPIX"] == -32
    wcs = WCS(header)
    assert list(wcs.wcs.ctype) == ["RA---SIN", "DEC--SIN", "FREQ", "STOKES"]
    for row in range(6):
        for column in range(8):
            pixel = 7 - column, row  # counted from 0, east on the left
            assert data[0, 0, pixel[1], pixel[0]] == 10 * row + column
            ra, dec, frequency, stokes = wcs.wcs_pix2world([[pixel[0], pixel[1], 0, 0]], 0)[0]
            expected = sin_position(60 * (column - 4), 90 * (row - 3), 64.5, 38.0)
            # Degrees; a thousandth of a milliarcsecond, far above rounding and far below a pixel.
            assert abs(ra - expected[0]) < 3e-10 and abs(dec - expected[1]) < 3e-10, (pixel, ra, dec, expected)
            assert abs(frequency - 5e9) < 1e-3 and stokes == -1
    west = wcs.wcs_pix2world([[7, 3, 0, 0]], 0)[0]
    east = wcs.wcs_pix2world([[0, 3, 0, 0]], 0)[0]
    assert east[0] > 64.5 > west[0], "east is not on the left"
    assert wcs.wcs.radesys == "FK5" and wcs.wcs.equinox == 2000.0 and wcs.wcs.specsys == "TOPOCENT"
    assert wcs.wcs.restfrq == 5e9 and header["CDELT3"] == 2.5e8
    assert units.Unit(header["BUNIT"]) == units.Jy / units.beam
    assert math.isclose(header["BMAJ"], 0.001) and math.isclose(header["BMIN"], 0.0005)
    assert header["BPA"] == 30.0 and header["BTYPE"] == "Intensity"
    assert header["OBJECT"] == "0415+379 %25"
    assert header["DATAMIN"] == 0.0 and header["DATAMAX"] == 57.0
    assert header["LXMIN"] == -240.0 and header["LFREQ"] == 5e9
    history = [str(line) for line in header["HISTORY"]]
    assert history[0] == "short" and "".join(history[1:]).replace("%", "") == 200 * "x"


def main():
    warnings.simplefilter("error")
    with tempfile.TemporaryDirectory() as folder:
        path = folder + "/sample.fits"
        subprocess.run([sys.argv[1], path], check=True)
        check(path)


main()
