#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Describes the products of runs: a row of a table per prefix on standard output, a picture PREFIX.png each.

    describe-maps.py MAPS OUT PREFIX...

Columns: reference frequency [GHz]; beam [mas, deg]; peak of the restored map; RMS of the residual map outside the
source (pixels of the restored map below 0.1 % of its peak); RMS / peak; position angle of the jet (intensity-weighted
centroid of the restored pixels above ten RMS and more than 1.5 beam widths from the peak, seen from the peak, north
through east); spectral index at the peak; intensity-weighted mean spectral index of the same jet pixels where the index map has a value.
"""
import sys

import matplotlib
import numpy as np
from astropy.io import fits

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

MAS = 3.6e6  # per degree


def load(start, suffix):
    with fits.open(f"{start}^{suffix}.exm") as hdus:
        return hdus[0].data[0, 0].astype(float), hdus[0].header


def offsets(header, shape):
    """East and north of every pixel from the reference position, mas."""
    east = (np.arange(shape[1]) + 1 - header["CRPIX1"]) * header["CDELT1"] * MAS
    north = (np.arange(shape[0]) + 1 - header["CRPIX2"]) * header["CDELT2"] * MAS
    return np.meshgrid(east, north)


def describe(start):
    restored, header = load(start, "cln0")
    residual, _ = load(start, "residual0")
    index, _ = load(start, "sindex")
    east, north = offsets(header, restored.shape)
    peak = restored.max()
    row, column = np.unravel_index(restored.argmax(), restored.shape)
    rms = residual[restored < 1e-3 * peak].std()
    away = np.hypot(east - east[row, column], north - north[row, column])
    jet = (restored > 10 * rms) & (away > 1.5 * header["BMAJ"] * MAS)
    angle = jetIndex = float("nan")
    if jet.any():
        weight = restored[jet]
        de = np.average(east[jet], weights=weight) - east[row, column]
        dn = np.average(north[jet], weights=weight) - north[row, column]
        angle = np.degrees(np.arctan2(de, dn))
        valued = jet & np.isfinite(index)
        if valued.any():
            jetIndex = np.average(index[valued], weights=restored[valued])
    beam = f"{header['BMAJ'] * MAS:.2f} x {header['BMIN'] * MAS:.2f}, {header['BPA']:.0f}"
    return (f"{header['CRVAL3'] * 1e-9:.3f} | {beam} | {peak:.4f} | {rms:.6f} | {100 * rms / peak:.3f} % | "
            f"{angle:.1f} | {index[row, column]:+.2f} | {jetIndex:+.2f}")


def extent(east, north):
    return [east[0, 0], east[0, -1], north[0, 0], north[-1, 0]]


def draw(start, picture):
    image, header = load(start, "cln_res0")
    residual, _ = load(start, "residual0")
    index, _ = load(start, "sindex")
    east, north = offsets(header, image.shape)
    box = extent(east, north)
    figure, axes = plt.subplots(1, 3, figsize=(15, 4.6), constrained_layout=True)
    peak = image.max()
    panels = ((np.log10(np.clip(image / peak, 1e-4, 1)), "restored + residual, log10(value / peak)", "inferno", {}),
              (residual, "residual of term 0 [Jy/beam]", "gray", {}),
              (index, "spectral index", "turbo", {"vmin": -2, "vmax": 2}))
    for axis, (values, title, colours, scale) in zip(axes, panels):
        shown = axis.imshow(values, origin="lower", extent=box, cmap=colours, interpolation="nearest", **scale)
        figure.colorbar(shown, ax=axis, shrink=0.85)
        axis.set_title(title, fontsize=10)
        axis.set_xlabel("east offset [mas]")
        axis.set_ylabel("north offset [mas]")
    reach = 0.25 * abs(box[0] - box[1])
    for axis in (axes[0], axes[2]):
        axis.set_xlim(reach, -reach)
        axis.set_ylim(-reach, reach)
    figure.savefig(picture, dpi=72)
    plt.close(figure)


def main():
    maps, out, *prefixes = sys.argv[1:]
    print("| run | ν0 [GHz] | beam [mas, °] | peak [Jy/beam] | residual RMS | RMS / peak | jet PA [°] "
          "| index at peak | index of jet |")
    print("|---|---|---|---|---|---|---|---|---|")
    for prefix in prefixes:
        print(f"| {prefix} | {describe(f'{maps}/{prefix}')} |")
        draw(f"{maps}/{prefix}", f"{out}/{prefix}.png")


if __name__ == "__main__":
    main()
