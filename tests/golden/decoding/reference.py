#!/usr/bin/env python3
"""Reference decoding of genes into branch coefficients, written apart from the
C++ decoder as a second reading of the formulas, to produce the expected values
in decoded.txt.

Every operation is rounded to 32-bit float, as the decoder must compute. The
transcendental functions are taken in double precision and rounded once, so
they are at least as good as any float library. The one place where the result
cannot be rebuilt bit for bit is the processor's reciprocal-square-root
estimate; here it is the exact 1/sqrt rounded to float, and the Newton step
that follows is the same as the decoder's. The comparison allows for that.

Usage: reference.py > decoded.txt
"""
import math
import struct


def f32(x):
    return struct.unpack('<f', struct.pack('<f', x))[0]


def add(a, b): return f32(a + b)
def sub(a, b): return f32(a - b)
def mul(a, b): return f32(a * b)
def div(a, b): return f32(a / b)
def sqrt(a): return f32(math.sqrt(a))
def powf(a, b): return f32(math.pow(a, b))
def exp2(a): return f32(2.0 ** a)
def expf(a): return f32(math.exp(a))
def logf(a): return f32(math.log(a))
def sq(a): return mul(a, a)
def cube(a): return mul(mul(a, a), a)
def fourth(a): return sq(sq(a))
def clamp01(a): return min(max(a, 0.0), 1.0)
def sign(a): return 1.0 if a > 0 else (-1.0 if a < 0 else 0.0)
def flush(a, limit): return 0.0 if abs(a) < f32(limit) else a


C = f32  # a float literal


GENES = ['env_time', 'env_loop', 'env_tilt', 'vol_atk', 'vol_dcy', 'vol_sus', 'mod_atk', 'mod_dcy',
         'mod_sh', 'mod_vel', 'lfo_rate', 'lfo_amt', 'lfo_bal', 'a_form', 'a_noise', 'a_color',
         'a_freq', 'a_mod', 'b_form', 'b_noise', 'b_freq', 'b_mod', 'b_sh', 'fm_amt', 'fm_mod',
         'sub_am', 'balance', 'flt_freq', 'flt_mod', 'flt_sep', 'flt_q', 'flt_kf', 'fx_mix',
         'fx_len', 'fx_damp', 'fx_chors']

FIELDS = ['atkRate', 'dcyRate', 'loopDecay', 'volAtkBias', 'volDcyBias', 'modAtkBias', 'modDcyBias',
          'volSus', 'modHoldRate', 'modVelBias', 'lfoStep', 'vibrato', 'tremolo', 'aForm', 'bForm',
          'aNoiseCoef', 'aNoiseGain', 'aGain', 'aFreq', 'aFreqMod', 'bFreq', 'bFreqMod', 'bNoise',
          'bTone', 'bGain', 'subAmount', 'bHoldRate', 'fmDepth', 'fmDepthMod', 'filterFreq',
          'filterFreqMod', 'filterSep', 'filterDamp', 'keyFollow', 'dryGain', 'sendGain',
          'reverbLen', 'reverbDamp', 'reverbChorus']


def form_level(f):
    if f < C(0.33333):
        lo, hi = C(0.1), 1.0
    elif f >= C(0.66666):
        u = mul(0.5, sq(sub(1.0, div(sub(f, C(0.66666)), C(0.33334)))))
        lo = min(max(C(0.1), u), C(0.9))
        hi = max(add(lo, C(0.1)), u)
    else:
        q = sq(sub(1.0, div(sub(f, C(0.33333)), C(0.33333))))
        u = div(sub(1.0, mul(q, q)), 2.0)
        lo = min(max(C(0.1), u), C(0.9))
        hi = max(add(lo, C(0.1)), div(add(q, 1.0), 2.0))
    w = sub(sub(C(1.1), lo), hi)
    p = add(add(mul(add(sub(hi, lo), C(0.1)), add(mul(w, w), 0.5)),
                mul(sq(add(1.0, w)), sub(lo, C(0.1)))),
            mul(sq(sub(1.0, w)), sub(1.0, hi)))
    e = f32(1.0 / math.sqrt(p))
    return mul(mul(-0.5, e), sub(mul(p, mul(e, e)), 3.0))


def decode(g, fx_size, effect, r):
    E = dict(zip(GENES, g))
    P = {}
    e = div(E['env_time'], C(0.9))
    endless = not (E['env_time'] < C(0.899999))
    T = 100000.0 if endless else div(mul(C(0.05), powf(100.0, e)), sub(1.0, e))
    loop = min(min(mul(C(0.02), powf(1000.0, div(E['env_loop'], C(0.8)))), T), 20.0)
    tilt = fourth(E['env_tilt'])
    one = div(1.0, r)
    P['atkRate'] = div(1.0, div(mul(max(mul(loop, tilt), one), r), 16.0))
    P['dcyRate'] = div(1.0, div(mul(max(mul(loop, sub(1.0, tilt)), one), r), 16.0))
    if endless:
        P['loopDecay'] = 1.0
    else:
        q = div(T, loop)
        P['loopDecay'] = 0.0 if q == 0 else powf(C(10010.0107), div(-1.0, q))
    P['volAtkBias'] = sub(1.0, mul(C(0.7), cube(sub(1.0, E['vol_atk']))))
    P['volDcyBias'] = add(mul(C(0.899), E['vol_dcy']), C(0.1))
    P['volSus'] = flush(sq(mul(max(sub(mul(3.0, E['vol_sus']), 1.0), 0.0), 0.5)), 0.001)

    def bias(x):
        v = sub(mul(2.0, x), 1.0)
        return add(div(mul(add(mul(sign(v), sqrt(sqrt(abs(v)))), 1.0), C(0.998)), 2.0), C(0.001))
    P['modAtkBias'] = bias(E['mod_atk'])
    P['modDcyBias'] = bias(E['mod_dcy'])
    P['modHoldRate'] = min(1.0, max(min(div(2.0, mul(T, r)), 1.0),
                                    mul(div(800000.0, r), powf(C(2e-5), sub(mul(2.0, E['mod_sh']), 1.0)))))
    P['modVelBias'] = sq(min(sub(C(1.1), E['mod_vel']), 1.0))
    P['lfoStep'] = min(mul(div(32.0, r), powf(40.0, E['lfo_rate'])), 0.5)
    a = cube(max(sub(mul(2.0, E['lfo_amt']), 1.0), 0.0))
    P['vibrato'] = mul(mul(div(add(mul(0.5, E['lfo_rate']), 0.5), 12.0), a),
                       clamp01(sub(3.0, mul(4.0, E['lfo_bal']))))
    P['tremolo'] = mul(a, clamp01(sub(mul(4.0, E['lfo_bal']), 1.0)))
    P['aForm'] = sq(E['a_form'])
    n = flush(fourth(clamp01(sub(mul(3.5, E['a_noise']), C(2.35)))), 1e-5)
    c = min(mul(div(50.0, r), powf(400.0, E['a_color'])), 0.5)
    P['aNoiseCoef'] = sub(1.0, expf(mul(C(-6.28318531), c)))
    noise_level = mul(sqrt(div(0.5, c)), n)
    tone_level = sqrt(sub(1.0, n))
    P['aFreq'] = mul(div(C(261.6256), r), exp2(sub(mul(6.0, E['a_freq']), 3.0)))
    am = flush(mul(8.0, cube(sub(mul(2.0, E['a_mod']), 1.0))), 1e-5)
    a_top = mul(P['aFreq'], exp2(am))
    P['aFreqMod'] = sub(a_top, P['aFreq'])
    P['bForm'] = sq(E['b_form'])
    P['bNoise'] = flush(fourth(clamp01(sub(mul(3.5, E['b_noise']), C(2.35)))), 1e-5)
    P['bTone'] = sub(1.0, P['bNoise'])
    y = sub(mul(12.0, E['b_freq']), 7.0)
    k = float(math.floor(add(y, 0.5)))
    d = sub(y, k)
    x = add(k, mul(16.0, mul(fourth(d), d)))
    bm = flush(mul(8.0, cube(sub(mul(2.0, E['b_mod']), 1.0))), 1e-5)
    P['bFreq'] = mul(P['aFreq'], exp2(x))
    P['bFreqMod'] = sub(mul(a_top, exp2(add(x, bm))), P['bFreq'])
    w = sq(E['b_sh'])
    P['bHoldRate'] = min(mul(div(50000.0, r), powf(C(4e-5), sub(mul(2.0, w), 1.0))), 1.0)
    limit = min(max(sub(7.0, mul(8.0, w)), 0.0), clamp01(add(x, 4.0)))
    f = sub(mul(2.0, E['fm_amt']), 1.0)
    fm_base = mul(mul(16.0, sign(f)), fourth(f))
    gg = sub(mul(4.0, E['fm_mod']), 2.0)
    P['fmDepth'] = mul(fm_base, exp2(gg))
    P['fmDepthMod'] = sub(mul(fm_base, exp2(-gg)), P['fmDepth'])
    P['subAmount'] = sq(max(sub(mul(1.5, E['sub_am']), 0.5), 0.0))
    bal = min(cube(E['balance']), limit)
    bal_a = sqrt(sub(1.0, bal))
    bal_b = sqrt(bal)
    P['aNoiseGain'] = mul(noise_level, bal_a)
    P['aGain'] = mul(mul(tone_level, form_level(P['aForm'])), bal_a)
    P['bGain'] = mul(form_level(P['bForm']), bal_b)
    pulse = max(mul(C(12.00012), sub(P['aForm'], C(0.66666))), 0.0)
    cut = add(pulse, mul(16.0, cube(sub(mul(1.5, E['flt_freq']), 0.5))))
    v = sub(mul(2.0, E['flt_mod']), 1.0)
    fm = mul(mul(8.0, v), abs(v))
    lower = exp2(sub(cut, min(0.0, fm)))
    upper = exp2(add(cut, max(0.0, fm)))
    P['filterFreq'] = mul(P['aFreq'], lower)
    P['filterFreqMod'] = sub(mul(a_top, upper), P['filterFreq'])
    v = sub(mul(2.0, E['flt_sep']), 1.0)
    P['filterSep'] = exp2(mul(mul(4.0, v), abs(v)))
    P['filterDamp'] = sub(C(0.6931472), mul(C(4.60517), E['flt_q']))
    level = mul(mul(0.5, min(max(div(2.0, max(lower, upper)), 1.0), 4.0)), expf(mul(P['filterDamp'], 0.125)))
    P['keyFollow'] = clamp01(sub(mul(2.0, E['flt_kf']), 0.5))
    m = E['fx_mix']
    m = add(m, mul(m, effect)) if effect < 0 else add(m, mul(sub(1.0, m), effect))
    wet = cube(m)
    P['reverbLen'] = mul(C(0.2), powf(100.0, sq(E['fx_len'])))
    s = add(mul(C(4.9), fx_size), C(0.1))
    size_gain = mul(4.0, sqrt(s)) if s >= 0.25 else 2.0
    if E['fx_damp'] >= 0.25:
        P['reverbDamp'] = sub(22500.0, div(mul(20250.0, sub(cube(E['fx_damp']), 0.25)), 0.75))
        tail = mul(mul(size_gain, powf(P['reverbLen'], sub(C(0.440867), mul(C(0.09585059), logf(P['reverbDamp']))))),
                   powf(P['reverbDamp'], C(-0.13287712)))
    else:
        P['reverbDamp'] = 0.0
        tail = mul(mul(size_gain, C(0.26)), powf(P['reverbLen'], C(-0.5291331)))
    P['reverbChorus'] = fourth(mul(2.0, E['fx_chors']))
    P['dryGain'] = mul(sqrt(sub(1.0, wet)), level)
    P['sendGain'] = mul(mul(tail, level), sqrt(wet))
    return P


# name, genes (36), fx_size, effect
GENOMES = [
    ('init', [0.5] * 36, 0.5, 0.0),
    # Fast plucky envelope, bright pulse with noise, B two octaves up with
    # slow hold, strong positive FM, wide filter sweep, short damped reverb.
    ('pluck', [0.3, 0.2, 0.1, 0.9, 0.2, 0.2, 0.8, 0.3, 0.75, 0.9,
               0.7, 0.8, 0.2, 0.9, 0.8, 0.3, 0.6, 0.7, 0.95, 0.9,
               0.75, 0.35, 0.55, 0.85, 0.3, 0.8, 0.6, 0.4, 0.85, 0.7,
               0.6, 0.9, 0.4, 0.3, 0.6, 0.2], 0.3, 0.4),
    # Slow pad: long loop, sustain, tremolo-side LFO, middle-morph waveforms,
    # B between octaves, negative FM, closed filter, long undamped reverb.
    ('pad', [0.8, 0.7, 0.6, 0.2, 0.7, 0.8, 0.3, 0.1, 0.2, 0.3,
             0.3, 0.95, 0.9, 0.7, 0.1, 0.8, 0.35, 0.4, 0.6, 0.2,
             0.53, 0.8, 0.1, 0.15, 0.85, 0.3, 0.9, 0.2, 0.1, 0.3,
             0.2, 0.3, 0.7, 0.8, 0.1, 0.4], 0.9, -0.5),
    # The low edge: every gene at 0 except where that would say nothing new.
    ('floor', [0.0] * 36, 0.0, -1.0),
    # The high edge: every gene at 1 (endless envelope, B at +5 octaves).
    ('ceiling', [1.0] * 36, 1.0, 1.0),
]

RATES = [44100.0, 48000.0]


def main():
    print('# Decoded branch coefficients for a few genomes, from reference.py.')
    print('# genome NAME / genes 36 values / fxSize / effect / rate, then FIELD VALUE lines, end.')
    for name, genes, fx_size, effect in GENOMES:
        g = [f32(x) for x in genes]
        for r in RATES:
            print('genome %s' % name)
            print('genes ' + ' '.join('%.9g' % x for x in g))
            print('fxSize %.9g' % f32(fx_size))
            print('effect %.9g' % f32(effect))
            print('rate %.9g' % r)
            P = decode(g, f32(fx_size), f32(effect), f32(r))
            for field in FIELDS:
                print('%s %.9g' % (field, P[field]))
            print('end')


if __name__ == '__main__':
    main()
