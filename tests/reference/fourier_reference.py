#!/usr/bin/python3
"""Reference values for tests/calc/FourierDeformTest.cpp, computed with plain Python.

Follows the definitions step by step with its own hull (monotone chain), its own centroid (the
shoelace formula), its own interpolation and a direct sum of cosines and sines for each order, so
that it shares no code with the program. Polygons in float32 like the program's rebuilt outlines.
Run: /usr/bin/python3 tests/reference/fourier_reference.py
"""
import math
import struct

PI = 3.141592653589793


def f32(x):
    return struct.unpack('f', struct.pack('f', x))[0]


def hull(points):
    pts = sorted(set(points))

    def cross(o, a, b):
        return (a[0] - o[0]) * (b[1] - o[1]) - (a[1] - o[1]) * (b[0] - o[0])

    lower, upper = [], []
    for p in pts:
        while len(lower) >= 2 and cross(lower[-2], lower[-1], p) <= 0:
            lower.pop()
        lower.append(p)
    for p in reversed(pts):
        while len(upper) >= 2 and cross(upper[-2], upper[-1], p) <= 0:
            upper.pop()
        upper.append(p)
    return lower[:-1] + upper[:-1]


def centroid(poly):
    a = cx = cy = 0.0
    for (x0, y0), (x1, y1) in zip(poly, poly[1:] + poly[:1]):
        c = x0 * y1 - x1 * y0
        a += c
        cx += (x0 + x1) * c
        cy += (y0 + y1) * c
    a *= 0.5
    return cx / (6 * a), cy / (6 * a)


def area_perimeter(poly):
    a = 0.0
    p = 0.0
    for (x0, y0), (x1, y1) in zip(poly, poly[1:] + poly[:1]):
        a += x0 * y1 - x1 * y0
        p += math.hypot(x1 - x0, y1 - y0)
    return abs(a) / 2, p


def deformation(points, harmonics=11, grid=100, steps=10, resample=True):
    h = hull(points)
    cx, cy = centroid(h)
    shifted = [(x - cx, y - cy) for x, y in h]
    polar = []
    for (x0, y0), (x1, y1) in zip(shifted, shifted[1:] + shifted[:1]):
        for s in range(steps):
            t = s / steps
            x, y = x0 + t * (x1 - x0), y0 + t * (y1 - y0)
            polar.append((math.atan2(y, x) % (2 * PI), math.hypot(x, y)))
    polar.sort(key=lambda p: p[0])
    if not resample:
        return unevenly_spaced(polar, harmonics)
    knots = []
    for p in polar:
        if not knots or p[0] != knots[-1][0]:
            knots.append(p)
    knots = [(knots[-1][0] - 2 * PI, knots[-1][1])] + knots + [(knots[0][0] + 2 * PI, knots[0][1])]
    thetas = [j * 2 * PI / grid for j in range(grid)]
    radii = []
    for th in thetas:
        for (t0, r0), (t1, r1) in zip(knots, knots[1:]):
            if t0 <= th <= t1:
                radii.append(r0 + (r1 - r0) * (th - t0) / (t1 - t0))
                break
    w = 2 * PI / grid
    a = [sum(r * math.cos(k * th) * w for r, th in zip(radii, thetas)) / PI for k in range(harmonics)]
    b = [sum(r * math.sin(k * th) * w for r, th in zip(radii, thetas)) / PI for k in range(harmonics)]
    a[0] /= 2

    def rebuilt(orders):
        poly = []
        for th in thetas:
            r = a[0] + sum(a[k] * math.cos(k * th) + b[k] * math.sin(k * th) for k in orders)
            poly.append((f32(r * math.cos(th)), f32(r * math.sin(th))))
        area, length = area_perimeter(poly)
        return 1 - 2 * math.sqrt(PI * area) / length

    return (rebuilt(range(1, harmonics, 2)), rebuilt(range(2, harmonics, 2)), rebuilt(range(1, harmonics)))


def unevenly_spaced(polar, harmonics):
    """Coefficients straight from the sorted points, each weighted by half the gaps to its neighbours."""
    thetas = [p[0] for p in polar]
    radii = [p[1] for p in polar]
    n = len(thetas)
    w = [0.5 * ((thetas[j] - thetas[j - 1]) % (2 * PI) + (thetas[(j + 1) % n] - thetas[j]) % (2 * PI))
         for j in range(n)]
    a = [sum(r * math.cos(k * th) * wj for r, th, wj in zip(radii, thetas, w)) / PI for k in range(harmonics)]
    b = [sum(r * math.sin(k * th) * wj for r, th, wj in zip(radii, thetas, w)) / PI for k in range(harmonics)]
    a[0] /= 2

    def rebuilt(orders):
        poly = []
        for th in thetas:
            r = a[0] + sum(a[k] * math.cos(k * th) + b[k] * math.sin(k * th) for k in orders)
            poly.append((f32(r * math.cos(th)), f32(r * math.sin(th))))
        area, length = area_perimeter(poly)
        return 1 - 2 * math.sqrt(PI * area) / length

    return (rebuilt(range(1, harmonics, 2)), rebuilt(range(2, harmonics, 2)), rebuilt(range(1, harmonics)))


def ellipse_deformation(a, b):
    """Deformation of an exact ellipse; its perimeter by Gauss-Kummer series to 1e-15."""
    h = ((a - b) / (a + b)) ** 2
    series, term, n = 1.0, 1.0, 1
    while True:
        c = math.comb(2 * n, n) / (4 ** n) / (2 * n - 1)
        term = c * c * h ** n
        if term < 1e-17:
            break
        series += term
        n += 1
    perimeter = PI * (a + b) * series
    return 1 - 2 * math.sqrt(PI * PI * a * b) / perimeter


if __name__ == '__main__':
    # An egg-shaped outline with an interior point and a notch, which the hull doesn't see.
    egg = [(0, 0), (30, -8), (55, -5), (70, 10), (60, 28), (30, 32), (5, 20), (30, 10), (40, 20), (20, 4)]
    print('egg hull', hull(egg))
    print('egg odd even fc %.12f %.12f %.12f' % deformation(egg))
    print('egg without resampling %.12f %.12f %.12f' % deformation(egg, steps=50, resample=False))
    print('ellipse 300 x 150 deformation %.12f' % ellipse_deformation(300, 150))
    # A large ellipse drawn as integer points: the analysis of its outline comes close to the exact one.
    pts = [(round(300 * math.cos(2 * PI * i / 2000)), round(150 * math.sin(2 * PI * i / 2000))) for i in range(2000)]
    print('ellipse points odd even fc %.12f %.12f %.12f' % deformation(pts))
    # Masks of 80 x 250 pixels as the tests draw them: pixel (x, y) is inside when
    # (x - cx)² b² + (y - cy)² a² <= a² b². The hull of all inside pixels is that of the outline.
    for cx, cy, a, b in [(125, 40, 40, 20), (60, 40, 25, 25)]:
        inside = [(x, y) for y in range(80) for x in range(250)
                  if (x - cx) ** 2 * b * b + (y - cy) ** 2 * a * a <= a * a * b * b]
        print('mask ellipse', (cx, cy, a, b), 'odd even fc %.12f %.12f %.12f' % deformation(inside),
              'exact %.12f' % ellipse_deformation(a, b))
