#!/usr/bin/env python3
"""Derives the golden vectors of branch growing from the written rules, with
nothing but Python integers and a 32-bit float rounding helper. It is kept
next to the vectors so that anyone can see where the numbers come from; it
never reads anything the C++ code produced.

    python3 tests/golden/growth/derive_vectors.py tests/golden/growth
"""
import math
import struct
import sys

M32 = 0xFFFFFFFF


def f32(x):
    """Round a Python float to the nearest 32-bit float."""
    return struct.unpack('<f', struct.pack('<f', x))[0]


def s32(u):
    u &= M32
    return u - (1 << 32) if u & 0x80000000 else u


def rotl1(u):
    u &= M32
    return ((u << 1) | (u >> 31)) & M32


def step(a, b):
    u = (b * 0x323785AF - 0x35F2CFD7) & M32
    na = ((((a * 0x569CF9F3 - 0x06DC3E2D) & M32) << 1) & M32) | (u >> 31)
    nb = ((u << 1) & M32) | (na >> 31)
    return na, nb


def gauss_from_point(x, y):
    s = x * x + y * y                      # exact; fits a signed 64-bit number
    h = s >> 32                            # upper 32 bits (s >= 0)
    if h < 16 or h >= 0x0FFFFFF0:
        return None
    fx = f32(f32(float(x)) * 2.0 ** -30)
    fy = f32(f32(float(y)) * 2.0 ** -30)
    w = f32(f32(float(s)) * 2.0 ** -60)
    ln = f32(math.log(w))
    r = f32(math.sqrt(f32(f32(-2.0 * ln) / w)))
    return f32(fx * r), f32(fy * r)


def gauss_pair(state):
    """state: [a, b]; steps until a candidate is accepted."""
    while True:
        state[0], state[1] = step(state[0], state[1])
        g = gauss_from_point(s32(state[0]) >> 1, s32(state[1]) >> 1)
        if g is not None:
            return g


def drawn_row(seed_k, impl):
    row = []
    if impl >= 2:
        st = [seed_k & M32, (~seed_k) & M32]
        for _ in range(18):
            row.extend(gauss_pair(st))
    else:
        t = 0
        for _ in range(18):
            while True:
                p = rotl1(((seed_k + t) * 0x569CF9F3 - 0x06DC3E2F) & M32)
                q = rotl1((p * 0x323785AF + 0xCA0D301F) & M32)
                t = q
                g = gauss_from_point(s32(p) >> 1, s32(q) >> 1)
                if g is not None:
                    row.extend(g)
                    break
    return row


def remap(row, impl):
    old = list(row)
    if impl >= 6:
        return old
    new = [0.0] * 36
    for c in range(9):
        new[c] = old[c]
    if impl in (4, 5):
        for c in range(10, 36):
            new[c] = old[c - 1]
    elif impl == 3:
        for c in range(10, 31):
            new[c] = old[c - 1]
        for c in range(32, 36):
            new[c] = old[c - 2]
    else:  # 0, 1, 2
        new[5] = -old[5]
        for c in range(10, 25):
            new[c] = old[c - 1]
        for c in range(26, 31):
            new[c] = old[c - 2]
        for c in range(32, 36):
            new[c] = old[c - 3]
    return new


def deviations(seed, impl, cloned):
    return [remap(drawn_row(seed if cloned else (seed + k) & M32, impl), impl) for k in range(12)]


def fold(v):
    y = f32(abs(f32(v - 1.0)))
    return f32(abs(f32(f32(y - 1.0) - f32(2.0 * math.floor(f32(y / 2.0))))))


def mutate(genes, d, L, A, impl):
    g = [f32(x) for x in genes[:36]]
    base = f32(f32(L * L) * f32(0.4))
    m = [base] * 36
    c = f32(1.0 - f32(2.0 * A))
    for i in (17, 21):
        g[i] = f32(g[i] + f32(f32(f32(0.5 - g[i]) * c) * L))
    above = max(f32(f32(2.0 * A) - 1.0), 0.0)
    m[20] = f32(m[20] * f32(A * A))
    m[16] = f32(m[16] * f32(above * above))
    m[17] = f32(m[17] * A)
    m[21] = f32(m[21] * A)
    if impl <= 3:
        g[23] = f32(g[23] + f32(f32(f32(0.5 - g[23]) * c) * L))
    if impl <= 4:
        m = [f32(x * 1.25) for x in m]
    return [fold(f32(g[i] + f32(d[i] * m[i]))) for i in range(36)]


def note_detune(seed, note, A):
    h = (((seed << 7) & M32) + note + 0x10C39AA1) & M32
    a, _ = step(h, (~h) & M32)
    t = max(f32(f32(2.0 * A) - 1.0), 0.0)
    return f32(f32(f32(f32(float(a)) * f32(2.3283064e-11)) - f32(0.05)) * f32(t * t))


def fmt(x):
    return '%.9g' % x


def write_generator(folder):
    with open(folder + '/generator.txt', 'w') as out:
        out.write('# seed, then the words a b after steps 1 to 8 (generator started at a = seed, b = NOT seed)\n')
        for seed in (1, 2, 12345, 0x80000000, 0xFFFFFFFF, 0xDEADBEEF):
            a, b = seed, (~seed) & M32
            words = []
            for _ in range(8):
                a, b = step(a, b)
                words.append('%08X %08X' % (a, b))
            out.write('%u %s\n' % (seed, ' '.join(words)))


def write_gaussian(folder):
    with open(folder + '/gaussian.txt', 'w') as out:
        out.write('# seed, the words a b after the tenth pair, then the first 10 pairs from a = seed, b = NOT seed\n')
        for seed in (1, 7, 12345, 0x80000000, 0xFFFFFFFF):
            st = [seed, (~seed) & M32]
            vals = []
            for _ in range(10):
                vals.extend(gauss_pair(st))
            out.write('%u %08X %08X %s\n' % (seed, st[0], st[1], ' '.join(fmt(v) for v in vals)))


SEEDS = (1, 2, 777, 12345, 0x7FFFFFFF, 0xFFFFFFF5, 0xFFFFFFFF)
IMPLS = (0, 1, 2, 3, 4, 5, 6, 10)


def write_deviations(folder):
    with open(folder + '/deviations.txt', 'w') as out:
        out.write('# seed implementation cloned branch, then the 36 deviations of that row\n')
        for seed in SEEDS:
            for impl in IMPLS:
                for cloned in (0, 1):
                    rows = deviations(seed, impl, cloned)
                    for k, row in enumerate(rows):
                        out.write('%u %d %d %d %s\n' % (seed, impl, cloned, k, ' '.join(fmt(v) for v in row)))


def mutation_cases():
    # (seed, implementation, cloned, branch, L, A, genome of 36)
    flat = [0.5] * 36
    ramp = [f32(i / 35.0) for i in range(36)]
    wave = [f32(0.5 + 0.45 * math.sin(i * 1.7)) for i in range(36)]
    edge = [0.0 if i % 2 == 0 else 1.0 for i in range(36)]
    cases = []
    for impl in (0, 1, 3, 4, 5, 10):
        cases.append((12345, impl, 0, 3, 0.8, 0.5, flat))
        cases.append((777, impl, 0, 7, 1.0, 0.2, wave))
        cases.append((1, impl, 1, 11, 0.35, 0.9, ramp))
        cases.append((0xFFFFFFFF, impl, 0, 0, 0.6, 0.65, edge))
    return cases


def write_mutations(folder):
    with open(folder + '/mutations.txt', 'w') as out:
        out.write('# seed implementation cloned branch L A | 36 genome values | 36 mutated genes\n')
        for seed, impl, cloned, k, L, A, genome in mutation_cases():
            L, A = f32(L), f32(A)
            d = deviations(seed, impl, cloned)[k]
            res = mutate(genome, d, L, A, impl)
            out.write('%u %d %d %d %s %s | %s | %s\n' % (seed, impl, cloned, k, fmt(L), fmt(A),
                                                       ' '.join(fmt(v) for v in genome),
                                                       ' '.join(fmt(v) for v in res)))


def write_detune(folder):
    with open(folder + '/detune.txt', 'w') as out:
        out.write('# seed note atonality detune\n')
        for seed in (1, 12345, 0xFFFFFFFF):
            for note in (48, 60, 61, 71, 72):
                for A in (0.5, 0.75, 1.0):
                    out.write('%u %d %s %s\n' % (seed, note, fmt(A), fmt(note_detune(seed, note, f32(A)))))


def round_half_away(x):
    return math.floor(x + 0.5) if x >= 0 else -math.floor(-x + 0.5)


def planted_tuning(n):
    x = f32(n - f32(0.25))
    rem = math.fmod(x, 0.5)                # exact
    if rem < 0:
        rem = f32(rem + 0.5)
    if rem >= 0.5 or f32(0.25 + rem) >= 0.75:
        rem = 0.0
    return f32(0.25 + rem)


def plant(rec, k, rng_a, rng_b):
    """rec: dict with seed, impl, cloned, pitch, genes (37), params (21)."""
    p = rec['params']
    a, b = step(rng_a, rng_b)
    seed = a if a != 0 else 1
    wheel = f32(p[0] * p[6])
    Lb = p[9 + k]
    L = f32(Lb + f32(f32(1.0 - Lb) * wheel))
    d = deviations(rec['seed'], rec['impl'], rec['cloned'])[k]
    genes = mutate(rec['genes'], d, L, p[3], rec['impl']) + [rec['genes'][36]]
    v = f32(f32(6.0 * genes[16]) - 3.0)
    pitch = f32(round_half_away(v) - v)
    r = int(round_half_away(f32(p[1] * 12.0)))
    r = int(math.fmod(r, 12))
    jS = note_detune(rec['seed'], 60 + k - r, p[3])
    jD = note_detune(seed, 60 + k, p[3])
    T = f32(f32(f32(f32(f32(2.0 * p[2]) - 1.0) + f32(rec['pitch'] - pitch)) + jS) - jD)
    N = f32(f32(T + 1.0) / 2.0)
    M = planted_tuning(N)
    pitch = f32(pitch + f32(f32(f32(2.0 * N) - 1.0) - f32(f32(2.0 * M) - 1.0)))
    return seed, genes, pitch, M


def plant_cases():
    init_params = [0.0, 0.0, 0.5, 0.5, 0.5, 0.25, 1.0, 0.5, 0.5] + [0.0] * 12
    cases = []
    # seed impl cloned pitch rng_a rng_b branch, genome, params
    wave = [f32(0.5 + 0.45 * math.sin(i * 1.3 + 0.2)) for i in range(37)]
    p1 = list(init_params); p1[9 + 4] = f32(0.7); p1[3] = f32(0.8); p1[2] = f32(0.62)
    cases.append(dict(seed=12345, impl=10, cloned=0, pitch=0.0, genes=wave, params=p1, k=4, rng=(0x1234, 0xABCD)))
    p2 = list(init_params); p2[0] = f32(0.5); p2[6] = f32(0.8); p2[1] = f32(0.3); p2[3] = f32(0.95)
    p2[9 + 10] = f32(0.25)
    cases.append(dict(seed=777, impl=1, cloned=0, pitch=f32(0.125), genes=wave, params=p2, k=10, rng=(1, 0xFFFFFFFE)))
    p3 = list(init_params); p3[9 + 0] = f32(1.0); p3[3] = f32(0.3); p3[2] = f32(0.1)
    cases.append(dict(seed=0xFFFFFFFF, impl=3, cloned=1, pitch=f32(-0.4), genes=[0.5] * 37, params=p3, k=0, rng=(0xDEADBEEF, 0x01234567)))
    p4 = list(init_params); p4[9 + 6] = f32(0.9); p4[3] = f32(0.7); p4[1] = f32(0.95); p4[2] = f32(0.99)
    cases.append(dict(seed=42, impl=6, cloned=0, pitch=0.0, genes=wave, params=p4, k=6, rng=(0x80000000, 0x7FFFFFFF)))
    return cases


def write_plants(folder):
    with open(folder + '/plant.txt', 'w') as out:
        out.write('# source: seed impl cloned pitch branch rngA rngB | 21 params | 37 genes\n')
        out.write('# planted (next line): seed pitch Tuning | 37 genes\n')
        for c in plant_cases():
            seed, genes, pitch, M = plant(c, c['k'], c['rng'][0], c['rng'][1])
            out.write('%u %d %d %s %d %08X %08X | %s | %s\n' % (
                c['seed'], c['impl'], c['cloned'], fmt(c['pitch']), c['k'], c['rng'][0], c['rng'][1],
                ' '.join(fmt(v) for v in c['params']), ' '.join(fmt(v) for v in c['genes'])))
            out.write('%u %s %s | %s\n' % (seed, fmt(pitch), fmt(M), ' '.join(fmt(v) for v in genes)))


if __name__ == '__main__':
    folder = sys.argv[1] if len(sys.argv) > 1 else '.'
    write_generator(folder)
    write_gaussian(folder)
    write_deviations(folder)
    write_mutations(folder)
    write_detune(folder)
    write_plants(folder)
