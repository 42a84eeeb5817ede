#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Compares the point sources of a simulated sky with what two imaging programs make of them: a row of a table a source.

    compare-sources.py SKY.json LUMO_PREFIX WSCLEAN_PREFIX...

LUMO_PREFIX is folder and prefix of a run of order 2, each WSCLEAN_PREFIX the -name of a run with several output channels.
A source's place and flux density are those of the paraboloid through the logarithm of the 3 x 3 pixels at its peak in the
restored map with residuals; the flux density is compared with the truth at that map's own frequency. The spectral
index is term 1 over term 0 there for the one, the slope of the peaks in the channels' maps for the other. Columns: "off",
pixels from the true place; "S", flux density over the true one; "Δα", index less the true one; "expected", what the pill-box
kernel leaves of the flux density: sinc(x / 2) sinc(y / 2) with x and y in map widths from the centre.
"""
import glob
import json
import sys

import numpy as np
from astropy.io import fits

MAS = 3.6e6  # per degree


def load(name):
    with fits.open(name) as hdus:
        return hdus[0].data[0, 0].astype(float), hdus[0].header


def place(header, source):
    """Column and row, from 0, of a source in the plane of the sky."""
    column = header["CRPIX1"] - 1 + source["east_mas"] / (header["CDELT1"] * MAS)
    row = header["CRPIX2"] - 1 + source["north_mas"] / (header["CDELT2"] * MAS)
    return column, row


def peak(image, header, source, reach=4):
    """Fitted column, row and value of the peak within some pixels of where the source should be."""
    column, row = (int(round(value)) for value in place(header, source))
    box = image[row - reach:row + reach + 1, column - reach:column + reach + 1]
    j, i = np.unravel_index(box.argmax(), box.shape)
    column, row = column + i - reach, row + j - reach
    y, x = (grid.ravel() for grid in np.mgrid[-1:2, -1:2])
    terms = np.stack([np.ones(9), x, y, x * x, x * y, y * y], axis=1)
    values = np.log(image[row - 1:row + 2, column - 1:column + 2]).ravel()
    c, gx, gy, xx, xy, yy = np.linalg.lstsq(terms, values, rcond=None)[0]
    shift = -np.linalg.solve([[2 * xx, xy], [xy, 2 * yy]], [gx, gy])
    return column + shift[0], row + shift[1], np.exp(c + 0.5 * (gx * shift[0] + gy * shift[1]))


class Measured:
    """One program's result: per source the distance from the true place in pixels, the share of the true flux density, the index."""

    def __init__(self, image, header, sky, indexOf):
        self.sources = []
        for source in sky["components"]:
            column, row, value = peak(image, header, source)
            trueColumn, trueRow = place(header, source)
            truth = source["flux_jy"] * (header["CRVAL3"] / (sky["reference_mhz"] * 1e6)) ** source["index"]
            self.sources.append((np.hypot(column - trueColumn, row - trueRow), value / truth, indexOf(source, column, row)))


def ours(start, sky):
    image, header = load(f"{start}^cln_res0.exm")
    slope, _ = load(f"{start}^cln_res1.exm")

    def index(_, column, row):
        at = int(round(row)), int(round(column))
        return slope[at] / image[at]
    return Measured(image, header, sky, index), header


def theirs(start, sky):
    image, header = load(f"{start}-MFS-image.fits")
    channels = [load(name) for name in sorted(glob.glob(f"{start}-[0-9]*-image.fits"))]

    def index(source, _, __):
        values = [peak(*channel, source)[2] for channel in channels]
        return np.polyfit(np.log([channel[1]["CRVAL3"] for channel in channels]), np.log(values), 1)[0]
    return Measured(image, header, sky, index)


def main():
    skyFile, lumo, *others = sys.argv[1:]
    with open(skyFile, encoding="utf-8") as stream:
        sky = json.load(stream)
    mine, header = ours(lumo, sky)
    runs = [mine] + [theirs(start, sky) for start in others]
    names = ["lumo-cli"] + [start.rsplit("/", 1)[-1] for start in others]
    heads = [f"{name}: off | S | Δα" for name in names]
    print("| source | true S [Jy], α | expected | " + " | ".join(heads) + " |")
    print("|---" * (3 + 3 * len(runs)) + "|")
    for i, source in enumerate(sky["components"]):
        widths = [abs(source[key] / (header[card] * MAS)) / header[axis] for key, card, axis in
                  (("east_mas", "CDELT1", "NAXIS1"), ("north_mas", "CDELT2", "NAXIS2"))]
        left = np.sinc(widths[0] / 2) * np.sinc(widths[1] / 2)
        cells = [f"{run.sources[i][0]:.2f} | {run.sources[i][1]:.4f} | {run.sources[i][2] - source['index']:+.3f}"
                 for run in runs]
        print(f"| {source['name']} | {source['flux_jy']:g}, {source['index']:+.1f} | {left:.4f} | " + " | ".join(cells) + " |")


if __name__ == "__main__":
    main()
