#!/usr/bin/env python3
"""Derives golden vectors of the plant's growth from the written rules, with
Python integers, Python doubles and a helper that rounds each single
precision operation to the nearest 32-bit float (a float operation computed
in double and rounded once is the correctly rounded float result for + - * /).
It never reads anything the C++ code produced; it is kept next to the
vectors so that anyone can see where the numbers come from.

    python3 tests/golden/plant/derive_plant.py > tests/golden/plant/derived.txt

Output: one record a line, words separated by blanks.
    generator SEED A1 B1 A2 B2 A3 B3          (three steps, hexadecimal)
    normal SEED N1 N2 N3                      (float bits, hexadecimal)
    wave P_BITS W_BITS
    color H_BITS S_BITS R G B
    case NAME                                 (a growLine call, then its lines)
    line BRANCH GENERATION R G B ALPHA_BITS COUNT X Y X Y ... (doubles as hex of their bits)
    pieces K E BYTE K E BYTE ...
"""
import math
import struct

M32 = 0xFFFFFFFF


def f32(x):
    return struct.unpack('<f', struct.pack('<f', x))[0]


def fbits(x):
    return '%08x' % struct.unpack('<I', struct.pack('<f', x))[0]


def dbits(x):
    return '%016x' % struct.unpack('<Q', struct.pack('<d', x))[0]


# Single precision constants as written.
TWO_PI = f32(6.2831855)
HALF_PI = f32(1.5707964)
THREE_HALF_PI = f32(4.712389)
DEG = f32(0.017453292)
TURN = f32(0.15915494)
WORD = f32(1.4629181e-09)
NSCALE = f32(4.0327452e-10)
NSHIFT = f32(3.4641016)
BYTE_SCALE = f32(255.99998)


class Gen:
    def __init__(self, seed):
        self.a = seed & M32
        self.b = (~seed) & M32

    def step(self):
        t = (self.a * 0xAD39F3E6 + 0xF24783A6) & M32
        na = t | (((self.b * 0x323785AF + 0xCA0D3029) & M32) >> 31)
        nb = ((self.b * 0x646F0B5E + 0x941A6052) & M32) | (t >> 31)
        self.a, self.b = na, nb

    def normal(self):
        self.step()
        a1, b1 = f32(float(self.a)), f32(float(self.b))
        self.step()
        a2, b2 = f32(float(self.a)), f32(float(self.b))
        total = f32(f32(f32(a1 + b1) + a2) + b2)
        return f32(f32(total * NSCALE) - NSHIFT)


def wave(p):
    x = f32(p - math.floor(p))
    x = f32(f32(2.0 * x) - 1.0)
    return f32(f32(4.0 * x) * f32(abs(x) - 1.0))


def color(h, s):
    if s == 0.0:
        return (255, 255, 255)
    hh = h if h == 1.0 else f32(h * 6.0)
    sector = math.floor(hh)
    f = f32(hh - sector)
    p = f32(1.0 - s)
    q = f32(1.0 - f32(s * f))
    t = f32(1.0 - f32(s * f32(1.0 - f)))
    rgb = [(1.0, t, p), (q, 1.0, p), (p, 1.0, t), (p, q, 1.0), (t, p, 1.0), (1.0, p, q)][int(sector)]
    return tuple(min(255, max(0, int(c * 255.99999999))) for c in rgb)


def seg_dist2(p, a, b):
    dx, dy = b[0] - a[0], b[1] - a[1]
    px, py = p[0] - a[0], p[1] - a[1]
    l2 = dx * dx + dy * dy
    if l2 > 0:
        t = (px * dx + py * dy) / l2
        if 0 <= t <= 1:
            c = px * dy - py * dx
            return c * c / l2
    qx, qy = p[0] - b[0], p[1] - b[1]
    return min(px * px + py * py, qx * qx + qy * qy)


class Settings:
    def __init__(self, **kw):
        self.hueVariation = f32(0.25)
        self.twigAlpha = 1.0
        self.twigSegmentSize = 3.0
        self.twigThreshold = 0.5
        self.twigNonlinearity = 1.0
        self.twigMaxGenerations = 3
        self.twigScale = 0.5
        self.twigScaleDistribution = 0.0
        self.twigMask = 0
        self.twistMask = 0
        self.plantZoom = 1.0
        self.alpha = 1.0
        self.saturation = 1.0
        self.alphaDrop = 1.0
        self.growthLimit = 10000.0
        self.rotationOffset = 0.0
        self.twigTwist = 0.0
        for k, v in kw.items():
            setattr(self, k, f32(v) if isinstance(v, float) else v)


def grow_line(S_, out, branch, seed, pos, rotation, length, hue, alpha, sway_seed, sway_phase, sway_amount,
              drop, generation, twist):
    twist_rad = f32(twist * DEG)
    x, y = pos
    shrink = f32(S_.twigSegmentSize / length) if length != 0 else math.inf
    R, S = Gen(seed), Gen(sway_seed)
    pts = []
    start_alpha = alpha
    h = f32(f32(R.normal() * S_.hueVariation) + hue)
    h = f32(h - math.floor(h))
    angle_step = 0.0
    i = 0
    while True:
        r = f32(S_.twigSegmentSize - f32(shrink * f32(float(i + 1))))
        if r <= S_.twigThreshold:
            break
        if (S_.twistMask & i) == 0:
            n = min(f32(f32(float(i + 1)) * S_.twigNonlinearity), 1.0)
            S.step()
            phase = f32(f32(f32(f32(float(S.a)) * WORD) + sway_phase) * TURN)
            g = R.normal()
            angle_step = f32(f32(f32(f32(wave(phase) * sway_amount) + S_.rotationOffset) * DEG)
                             + f32(f32(n * twist_rad) * g))
            if rotation < 0:
                rotation = f32(rotation + TWO_PI)
            elif rotation >= TWO_PI:
                rotation = f32(rotation - TWO_PI)
            if drop != 0:
                d = f32(drop * DEG)
                if rotation < HALF_PI or rotation >= THREE_HALF_PI:
                    angle_step = f32(angle_step - d)
                else:
                    angle_step = f32(angle_step + d)
        s = f32(S_.plantZoom * r)
        rotation = f32(rotation + angle_step)
        nx = x - f32(wave(f32(f32(rotation + HALF_PI) * TURN)) * s)
        ny = y - f32(wave(f32(rotation * TURN)) * s)
        if r < S_.growthLimit:
            if len(pts) == 64:
                break
            if not pts:
                pts.append((x, y))
            pts.append((nx, ny))
        x, y = nx, ny
        if (S_.twigMask & i) == 0 and generation < S_.twigMaxGenerations:
            g = R.normal()
            child_rot = f32(f32(g * twist_rad) + rotation)
            scale = S_.twigScale
            if S_.twigScaleDistribution > 0:
                scale = f32(scale + f32(S_.twigScaleDistribution * R.normal()))
                scale = min(max(scale, 0.0), 1.0)
            R.step()
            child_seed = R.a
            S.step()
            child_sway = S.a
            child_len = f32(f32(f32(r / S_.twigSegmentSize) * length) * scale)
            grow_line(S_, out, branch, child_seed, (x, y), child_rot, child_len, h, f32(alpha * S_.twigAlpha),
                      child_sway, sway_phase, sway_amount, drop, generation + 1, S_.twigTwist)
        alpha = f32(alpha * S_.alphaDrop)
        if r <= S_.twigThreshold or alpha <= f32(0.05):
            break
        i += 1
    if len(pts) >= 2:
        pieces = []
        a = start_alpha
        k = 0
        while k < len(pts) - 1:
            nxt = f32(a * S_.alphaDrop)
            e = k + 2
            while e < len(pts):
                total = 0.0
                for j in range(k + 1, e):
                    total += seg_dist2(pts[j], pts[k], pts[e])
                if total >= 0.5:
                    break
                if f32(a - nxt) > f32(0.1):
                    break
                nxt = f32(nxt * S_.alphaDrop)
                e += 1
            byte = int(f32(f32(min(a, 1.0) * S_.alpha) * BYTE_SCALE))
            pieces.append((k, e - 1, max(0, min(255, byte))))
            a = nxt
            k = e - 1
        out.append((branch, generation, color(h, S_.saturation), start_alpha, pts, pieces))


def emit_lines(name, lines):
    print('case', name)
    for branch, gen, rgb, alpha, pts, pieces in lines:
        words = ['line', str(branch), str(gen), str(rgb[0]), str(rgb[1]), str(rgb[2]), fbits(alpha), str(len(pts))]
        for px, py in pts:
            words += [dbits(px), dbits(py)]
        print(' '.join(words))
        print(' '.join(['pieces'] + ['%d %d %d' % p for p in pieces]))


def panel_settings(**kw):
    base = dict(hueVariation=0.07, saturation=0.8, alpha=0.6, alphaDrop=0.8, twigAlpha=0.5, twigSegmentSize=5.0,
                twigThreshold=1.0, twigNonlinearity=1.0, twigMaxGenerations=2, twigScale=0.5,
                twigScaleDistribution=0.1, twigMask=2, twistMask=1, plantZoom=1.0)
    base.update(kw)
    return Settings(**base)


def main():
    for seed in (1, 0x12345678, 0xFFFFFFFF):
        g = Gen(seed)
        words = []
        for _ in range(3):
            g.step()
            words += ['%08x' % g.a, '%08x' % g.b]
        print('generator', '%08x' % seed, ' '.join(words))
    for seed in (1, 7, 0x9E3779B9):
        g = Gen(seed)
        print('normal', '%08x' % seed, ' '.join(fbits(g.normal()) for _ in range(3)))
    for p in (0.0, 0.125, 0.25, 0.3, 0.5, 0.75, 0.9, -0.25, 1.25, 3.7):
        print('wave', fbits(f32(p)), fbits(wave(f32(p))))
    for h, s in ((0.0, 1.0), (0.3, 0.8), (0.5, 0.5), (0.99, 1.0), (1.0, 0.8), (0.7, 0.0), (0.45, 0.8)):
        rgb = color(f32(h), f32(s))
        print('color', fbits(f32(h)), fbits(f32(s)), rgb[0], rgb[1], rgb[2])

    # A lone line with the panel's settings and no twigs: branch 3 of seed
    # 1000 from (100, 200), pointing at 0.7 radians, 20 steps long.
    out = []
    S_ = panel_settings(twigMaxGenerations=0)
    grow_line(S_, out, 3, (3 + 1000) ^ 0x12345678, (100.0, 200.0), f32(0.7), f32(20.0), f32(0.3), f32(6.5),
              3 + 1000, f32(0.0), f32(0.5), f32(0.0), 0, f32(2.2))
    emit_lines('lone', out)

    # The same line with its twigs of generations 1 and 2, a twig twist,
    # a swaying phase, a bend and a drop.
    out = []
    S_ = panel_settings(twigTwist=7.0, rotationOffset=1.5)
    grow_line(S_, out, 3, (3 + 1000) ^ 0x12345678, (100.0, 200.0), f32(0.7), f32(20.0), f32(0.3), f32(6.5),
              3 + 1000, f32(1.25), f32(2.5), f32(4.0), 0, f32(2.2))
    emit_lines('twigs', out)

    # Default settings: every step forks, three generations, no alpha drop.
    out = []
    S_ = Settings(twigTwist=6.0)
    grow_line(S_, out, 0, 0x12345678 ^ 5, (0.0, 0.0), f32(-1.5707964), f32(9.0), f32(0.25), f32(1.0), 5, f32(0.0),
              f32(0.0), f32(0.0), 0, f32(3.0))
    emit_lines('defaults', out)

    # A long line under the 64-point limit.
    out = []
    S_ = Settings(twigMaxGenerations=0, twigSegmentSize=3.0, alphaDrop=1.0)
    grow_line(S_, out, 2, 0xABCDEF, (50.0, 50.0), f32(2.0), f32(500.0), f32(0.6), f32(1.0), 77, f32(0.0),
              f32(0.0), f32(0.0), 0, f32(4.0))
    emit_lines('capped', out)
    more_cases()


def more_cases():
    # A bend of 500 degrees a step: the rotation is brought back by one
    # 2 pi at each new angle step, not into 0 to 2 pi whatever it takes.
    out = []
    S_ = Settings(twigMaxGenerations=0, rotationOffset=500.0, hueVariation=0.0)
    grow_line(S_, out, 1, 4321, (0.0, 0.0), f32(0.25), f32(12.0), f32(0.3), f32(1.0), 4322, f32(0.0),
              f32(0.0), f32(0.0), 0, f32(2.0))
    emit_lines('spinning', out)

    # A twig scale above 1 with no distribution stays as it is: only a drawn
    # scale is held within 0 to 1.
    out = []
    S_ = Settings(twigMaxGenerations=1, twigScale=1.5, twigScaleDistribution=0.0, alphaDrop=0.9)
    grow_line(S_, out, 4, 999, (10.0, 20.0), f32(3.0), f32(6.0), f32(0.7), f32(1.0), 998, f32(0.0),
              f32(0.0), f32(0.0), 0, f32(5.0))
    emit_lines('unclamped', out)


if __name__ == '__main__':
    main()
