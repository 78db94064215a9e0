#!/usr/bin/python3
"""Reference densities for tests/calc/DensityTest.cpp, computed independently with numpy/scipy.

The data sets are built from integer formulas, so the C++ test makes bit-identical inputs. The
smoothing uses scipy.ndimage.convolve1d, the quartiles numpy.quantile, and the neighbour search
tests every cell of the grid for membership in a ring instead of walking the ring's border.
Run: /usr/bin/python3 tests/reference/density_reference.py
"""
import math

import numpy as np
from scipy import ndimage


def two_clusters():
    """60 points: 40 in a compact cluster, 20 in a wider one."""
    x, y = [], []
    for i in range(60):
        if i < 40:
            x.append(2.0 + ((i * 37) % 41) / 20.0)
            y.append(1.0 + ((i * 23) % 43) / 25.0)
        else:
            x.append(6.0 + ((i * 17) % 29) / 10.0)
            y.append(3.0 + ((i * 13) % 31) / 8.0)
    return np.array(x), np.array(y)


def bell(count):
    """Sums of three integer sequences: a roughly bell-shaped, correlated cloud."""
    x, y = [], []
    for i in range(count):
        a = (i * 7919) % 1009
        b = (i * 104729) % 1013
        c = (i * 1299709) % 1019
        x.append((a + b + c) / 300.0)
        y.append((a + 2 * ((i * 15485863) % 1021)) / 250.0)
    return np.array(x), np.array(y)


def bell_with_core():
    """bell(1000) and a dense core of 500 points on a fine lattice: a mid-sized optimal grid."""
    x, y = bell(1000)
    core = np.arange(500)
    return (np.concatenate([x, 5.0 + (core % 37) / 100.0]),
            np.concatenate([y, 4.0 + (core * 7 % 41) / 100.0]))


def centre_and_outliers():
    """180 points in the middle and 20 scattered over the whole square, for the neighbour rings."""
    x, y = [], []
    for i in range(200):
        if i < 180:
            x.append(4.0 + ((i * 37) % 97) / 50.0)
            y.append(4.0 + ((i * 53) % 89) / 45.0)
        else:
            x.append(((i * 7) % 20) / 2.0)
            y.append(((i * 11) % 20) / 2.0)
    return np.array(x), np.array(y)


def extent(v):
    lo = v.min()
    r = v.max() - lo
    return lo, (r if r > 0 else 1.0)


def bins(v, origin, step, n):
    return np.clip(np.floor((v - origin) / step), 0, n - 1).astype(int)


def histogram(x, y, n):
    xlo, xr = extent(x)
    ylo, yr = extent(y)
    xb = bins(x, xlo, xr / n, n)
    yb = bins(y, ylo, yr / n, n)
    counts = np.bincount(yb * n + xb, minlength=n * n)
    return counts, xb, yb, xr / n, yr / n


def optimal_grid_size(x, y):
    if len(x) < 4:
        return 32
    best, best_cost, previous = 64, math.inf, 0
    for k in range(20):
        n = int(math.floor(math.exp(k * 2.7725888 / 19 + 3.4657359) + 0.5))
        if n == previous:
            continue
        previous = n
        counts, _, _, dx, dy = histogram(x, y, n)
        mean = len(x) / n**2
        var = math.fsum((counts - mean) ** 2) / n**2
        cost = (2 * mean - var) / (dx * dy) ** 2
        if cost < best_cost:
            best, best_cost = n, cost
    return best


def bandwidth(v):
    q25, q75 = np.quantile(v, [0.25, 0.75])
    iqr = q75 - q25
    sd = np.std(v)
    sigma = min(iqr / 1.34, sd) if iqr > 0 else sd
    h = len(v) ** (-1 / 6) * sigma
    return h if h > 0 else 1.0


def kernel(cells):
    r = max(math.ceil(4 * cells), 1)
    k = np.arange(-r, r + 1)
    w = np.exp(-0.5 * (k / cells) ** 2)
    return w / w.sum()


def kde_grid(x, y):
    g = optimal_grid_size(x, y)
    hx, hy = bandwidth(x), bandwidth(y)
    xo, yo = x.min() - 3 * hx, y.min() - 3 * hy
    xs, ys = (x.max() + 3 * hx - xo) / g, (y.max() + 3 * hy - yo) / g
    counts = np.zeros((g, g))
    np.add.at(counts, (bins(y, yo, ys, g), bins(x, xo, xs, g)), 1.0)
    smooth = ndimage.convolve1d(counts, kernel(hx / xs), axis=1, mode="constant", cval=0.0)
    smooth = ndimage.convolve1d(smooth, kernel(hy / ys), axis=0, mode="constant", cval=0.0)
    return smooth, g, xo, yo, xs, ys


def interpolate(grid, g, xo, yo, xs, ys, x, y):
    fx = (x - xo) / xs - 0.5
    fy = (y - yo) / ys - 0.5
    i, j = np.floor(fx), np.floor(fy)
    tx, ty = fx - i, fy - j
    i0, i1 = np.clip(i, 0, g - 1).astype(int), np.clip(i + 1, 0, g - 1).astype(int)
    j0, j1 = np.clip(j, 0, g - 1).astype(int), np.clip(j + 1, 0, g - 1).astype(int)
    return ((1 - tx) * (1 - ty) * grid[j0, i0] + tx * (1 - ty) * grid[j0, i1]
            + (1 - tx) * ty * grid[j1, i0] + tx * ty * grid[j1, i1])


def neighbours(x, y):
    n = len(x)
    k = max(int(math.sqrt(n)), 1)
    cells = max(int(math.sqrt(n / 20)), 1)
    xlo, xr = extent(x)
    ylo, yr = extent(y)
    col = bins(x, xlo, xr / cells, cells)
    row = bins(y, ylo, yr / cells, cells)
    out = np.empty(n)
    for p in range(n):
        found = []
        r = 0
        while len(found) < k and r <= cells:
            r0, r1 = max(row[p] - r, 0), min(row[p] + r, cells - 1)
            c0, c1 = max(col[p] - r, 0), min(col[p] + r, cells - 1)
            inside = (row >= r0) & (row <= r1) & (col >= c0) & (col <= c1)
            border = inside & ((row == r0) | (row == r1) | (col == c0) | (col == c1))
            border[p] = False
            found.extend(((x[border] - x[p]) ** 2 + (y[border] - y[p]) ** 2).tolist())
            r += 1
        m = min(len(found), k)
        d2 = sorted(found)[m - 1]
        out[p] = m / (math.pi * d2) if d2 > 0 else m
    return out


def show(name, values):
    print(f"{name} = {{ " + ", ".join(repr(float(v)) for v in values) + " }")


if __name__ == "__main__":
    x, y = two_clusters()
    grid, g, xo, yo, xs, ys = kde_grid(x, y)
    print("two clusters: grid", g, "origin", repr(xo), repr(yo), "step", repr(xs), repr(ys))
    print("grid maximum", repr(grid.max()), "at", np.unravel_index(grid.argmax(), grid.shape),
          "sum", repr(grid.sum()))
    show("kde", interpolate(grid, g, xo, yo, xs, ys, x, y))
    counts, xb, yb, _, _ = histogram(x, y, optimal_grid_size(x, y))
    show("hist", counts[yb * g + xb])
    show("knn", neighbours(x, y))

    x, y = bell_with_core()
    grid, g, xo, yo, xs, ys = kde_grid(x, y)
    print("bell with core: grid", g, "origin", repr(xo), repr(yo), "step", repr(xs), repr(ys))
    picks = [0, 1, 2, 3, 500, 999, 1000, 1250, 1499]
    dens = interpolate(grid, g, xo, yo, xs, ys, x, y)
    show("kde picks", dens[picks])
    counts, xb, yb, _, _ = histogram(x, y, g)
    show("hist picks", counts[yb * g + xb][picks])
    d = np.sort(dens)
    print("density at 0.1, 0.67:", repr(d[int(len(d) * 0.1)]), repr(d[int(len(d) * 0.67)]))

    x, y = centre_and_outliers()
    show("knn rim picks", neighbours(x, y)[[0, 50, 179] + list(range(180, 200))])
