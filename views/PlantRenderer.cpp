#include "views/PlantRenderer.h"

#include <algorithm>
#include <cmath>

namespace views {

namespace {

// Within a line every angle, length and alpha is a 32-bit float, and its
// constants are their single precision forms; only a branch's direction at
// the core is reckoned in double. The forms of 2 pi, pi / 2, 3 pi / 2,
// pi / 180 and 1 / (2 pi):
constexpr float TWO_PI = 6.2831855f;
constexpr float HALF_PI = 1.5707964f;
constexpr float THREE_HALF_PI = 4.712389f;
constexpr float DEGREE = 0.017453292f;
constexpr float PER_TURN = 0.15915494f;
// 2 pi / 2^32: a generator word as an angle.
constexpr float WORD_ANGLE = 1.4629181e-09f;

// trunc(x * 255.99999999) in double, held within a byte.
std::uint8_t colorByte(float x) {
    const double v = static_cast<double>(x) * 255.99999999;
    if (!(v > 0.0)) return 0;
    if (v >= 255.0) return 255;
    return static_cast<std::uint8_t>(v);
}

// trunc(x) of a piece's alpha times 255.99998, held within a byte.
std::uint8_t pieceByte(float x) {
    if (!(x > 0.0f)) return 0;
    if (x >= 255.0f) return 255;
    return static_cast<std::uint8_t>(x);
}

}  // namespace

void plantLineColor(float hue, float saturation, std::uint8_t rgb[3]) {
    if (saturation == 0.0f) {
        rgb[0] = rgb[1] = rgb[2] = 255;
        return;
    }
    const float h = hue == 1.0f ? hue : hue * 6.0f;
    const float sector = std::floor(h);
    const float f = h - sector;
    const float s = saturation;
    const float p = 1.0f - s;
    const float q = 1.0f - s * f;
    const float t = 1.0f - s * (1.0f - f);
    float r = 1.0f, g = t, b = p;  // sector 0, also for a hue outside 0 to 1
    if (sector == 1.0f) r = q, g = 1.0f, b = p;
    else if (sector == 2.0f) r = p, g = 1.0f, b = t;
    else if (sector == 3.0f) r = p, g = q, b = 1.0f;
    else if (sector == 4.0f) r = t, g = p, b = 1.0f;
    else if (sector == 5.0f) r = 1.0f, g = p, b = q;
    rgb[0] = colorByte(r);
    rgb[1] = colorByte(g);
    rgb[2] = colorByte(b);
}

double squaredDistanceToSegment(const PlantPoint& p, const PlantPoint& a, const PlantPoint& b) {
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double px = p.x - a.x, py = p.y - a.y;
    const double toA = px * px + py * py;
    const double qx = p.x - b.x, qy = p.y - b.y;
    const double toB = qx * qx + qy * qy;
    const double length2 = dx * dx + dy * dy;
    if (length2 > 0.0) {
        const double t = (px * dx + py * dy) / length2;
        if (t >= 0.0 && t <= 1.0) {
            const double cross = px * dy - py * dx;
            return cross * cross / length2;
        }
    }
    return std::min(toA, toB);
}

float plantTwist(float minTwist, float maxTwist, float atonality) {
    return minTwist * std::exp(std::log(maxTwist / minTwist) * atonality);
}

void PlantRenderer::growBranches(PlantGeometry& canvas, const PlantFrame& frame, const PlantShapeSettings& shape) {
    canvas.clear();
    stepsLeft_ = FRAME_STEP_BUDGET;
    depth_ = 0;
    const PlantSettings& s = settings;
    const float core = static_cast<float>(s.coreSize) * s.plantZoom;
    const float d3 = frame.decay * frame.decay * frame.decay;
    for (int i = 0; i < BRANCH_COUNT; ++i) {
        // The branch's direction u in doubles; it starts at the core's rim
        // on the side of -u and grows along -u.
        const double angle = ((i * 360.0 / 12.0) - 90.0 + frame.rotation) * 0.017453292;
        const double ux = std::cos(angle), uy = std::sin(angle);
        const PlantPoint start{frame.centerX - ux * core, frame.centerY - uy * core};
        const float v = frame.shown[i] + (1.0f - frame.shown[i]) * d3;
        const float length = std::max(0.0f, s.minBranchLength + (s.maxBranchLength - s.minBranchLength) * v);
        const float alpha = s.minRootAlpha + (s.maxRootAlpha - s.minRootAlpha) * std::clamp(v, 0.0f, 1.0f);
        const std::uint32_t lineSeed = (static_cast<std::uint32_t>(i) + seed) ^ 0x12345678u;
        // A cloned plant sways all its branches alike.
        const std::uint32_t swaySeed = frame.cloned ? seed : static_cast<std::uint32_t>(i) + seed;
        const float swayAmount = shape.swayMinAmount + (shape.swayMaxAmount - shape.swayMinAmount) * frame.level[i];
        const float drop = frame.decay * shape.decayMax;
        branch_ = i;
        grow(canvas, lineSeed, start, static_cast<float>(angle), length, s.baseHue, alpha, swaySeed, frame.phase[i],
             swayAmount, drop, 0, frame.rootTwist);
    }
}

void PlantRenderer::growLine(PlantGeometry& canvas, int branch, std::uint32_t lineSeed, const PlantPoint& position,
                             float rotation, float length, float hue, float alpha, std::uint32_t swaySeed,
                             float swayPhase, float swayAmount, float drop, int generation, float twist) {
    stepsLeft_ = FRAME_STEP_BUDGET;
    depth_ = 0;
    branch_ = branch;
    grow(canvas, lineSeed, position, rotation, length, hue, alpha, swaySeed, swayPhase, swayAmount, drop, generation,
         twist);
}

void PlantRenderer::grow(PlantGeometry& canvas, std::uint32_t lineSeed, const PlantPoint& position, float rotation,
                         float length, float hue, float alpha, std::uint32_t swaySeed, float swayPhase,
                         float swayAmount, float drop, int generation, float twist) {
    const PlantSettings& s = settings;
    const float twistRad = twist * DEGREE;
    PlantPoint at = position;
    const float stepShrink = s.twigSegmentSize / length;
    PlantRandom R = PlantRandom::fromSeed(lineSeed);
    PlantRandom S = PlantRandom::fromSeed(swaySeed);
    // Each depth of twigs has its own slice of the scratch points: a line's
    // points stay while its twigs grow.
    PlantPoint* points = scratch_.data() + std::size_t(depth_) * MAX_POINTS;
    int count = 0;
    const float startAlpha = alpha;

    // The line's hue takes its draw before anything else, even when the
    // line is too short to grow a single segment.
    float h = R.normal() * s.hueVariation + hue;
    h = h - std::floor(h);

    const bool mayFork =
        generation < s.twigMaxGenerations && generation < MAX_TWIG_GENERATION && depth_ < MAX_TWIG_GENERATION;
    float angleStep = 0.0f;
    for (int i = 0;; ++i) {
        // Segments taper linearly to 0 over `length` steps.
        const float r = s.twigSegmentSize - stepShrink * static_cast<float>(i + 1);
        if (r <= s.twigThreshold) break;
        if (stepsLeft_ <= 0) break;
        --stepsLeft_;
        if ((s.twistMask & i) == 0) {
            const float n = std::min(static_cast<float>(i + 1) * s.twigNonlinearity, 1.0f);
            // Each step has its own fixed phase; swayPhase moves them together.
            S.step();
            const float phase = (static_cast<float>(S.a) * WORD_ANGLE + swayPhase) * PER_TURN;
            const float g = R.normal();
            angleStep = (wave(phase) * swayAmount + rotationOffset) * DEGREE + n * twistRad * g;
            if (rotation < 0.0f)
                rotation += TWO_PI;
            else if (rotation >= TWO_PI)
                rotation -= TWO_PI;
            if (drop != 0.0f) {
                // The line leans towards the bottom of the view.
                if (rotation < HALF_PI || rotation >= THREE_HALF_PI)
                    angleStep -= drop * DEGREE;
                else
                    angleStep += drop * DEGREE;
            }
        }
        const float size = s.plantZoom * r;
        rotation += angleStep;
        const float dx = wave((rotation + HALF_PI) * PER_TURN) * size;
        const float dy = wave(rotation * PER_TURN) * size;
        const PlantPoint next{at.x - static_cast<double>(dx), at.y - static_cast<double>(dy)};
        // A withering plant shows only its small outer ends.
        if (r < growthLimit) {
            if (count == MAX_POINTS) break;
            if (count == 0) points[count++] = at;
            points[count++] = next;
        }
        at = next;
        if ((s.twigMask & i) == 0 && mayFork) {
            const float g = R.normal();
            const float childRotation = g * twistRad + rotation;
            float scale = s.twigScale;
            if (s.twigScaleDistribution > 0.0f) {
                scale += s.twigScaleDistribution * R.normal();
                scale = scale < 0.0f ? 0.0f : scale > 1.0f ? 1.0f : scale;
            }
            R.step();
            const std::uint32_t childSeed = R.a;
            S.step();
            const std::uint32_t childSwaySeed = S.a;
            ++depth_;
            grow(canvas, childSeed, at, childRotation, (r / s.twigSegmentSize) * length * scale, h,
                 alpha * s.twigAlpha, childSwaySeed, swayPhase, swayAmount, drop, generation + 1, twigTwist);
            --depth_;
        }
        alpha *= s.alphaDrop;
        if (r <= s.twigThreshold || alpha <= 0.05f) break;
    }
    if (count >= 2) addLine(canvas, points, count, h, startAlpha, generation);
}

void PlantRenderer::addLine(PlantGeometry& canvas, const PlantPoint* points, int count, float hue, float startAlpha,
                            int generation) const {
    const PlantSettings& s = settings;
    PlantLine line;
    line.branch = branch_;
    line.generation = generation;
    std::uint8_t rgb[3];
    plantLineColor(hue, s.saturation, rgb);
    line.red = rgb[0];
    line.green = rgb[1];
    line.blue = rgb[2];
    line.alpha = startAlpha;
    canvas.addLine(line, std::span<const PlantPoint>(points, static_cast<std::size_t>(count)));

    // Pieces are merged so that a mostly straight line costs few draws: a
    // piece from k reaches on while the points it passes stay close to it
    // and its alpha falls by no more than 0.1.
    float a = startAlpha;
    int k = 0;
    while (k < count - 1) {
        float next = a * s.alphaDrop;
        int e = k + 2;
        for (; e < count; ++e) {
            // Either test ends the piece; the cheap one goes first.
            if (a - next > 0.1f) break;
            double sum = 0.0;
            for (int j = k + 1; j < e; ++j) sum += squaredDistanceToSegment(points[j], points[k], points[e]);
            if (sum >= 0.5) break;
            next *= s.alphaDrop;
        }
        const int last = e - 1;
        canvas.addPiece({k, last, pieceByte(std::min(a, 1.0f) * s.alpha * 255.99998f)});
        a = next;
        k = last;
    }
}

PlantFrame restingPlantFrame(const NorvelleProgram& record, const OrlPixels::IntRect& bounds,
                             const PlantShapeSettings& shape, PlantRenderer& renderer) {
    PlantFrame frame;
    const std::int64_t left = bounds.left, top = bounds.top;
    frame.centerX = static_cast<double>((left + bounds.right()) / 2);
    frame.centerY = static_cast<double>((top + bounds.bottom()) / 2);
    double degrees = static_cast<double>(record.param(Param::Rotation)) * 360.0;
    degrees -= 360.0 * std::floor(degrees / 360.0);
    frame.rotation = degrees >= 360.0 || !(degrees >= 0.0) ? 0.0 : degrees;
    const float modWheel = record.param(Param::ModWheel);
    const float wheelScale = record.param(Param::WheelScale);
    for (int i = 0; i < BRANCH_COUNT; ++i) {
        const float b = record.param(Param::Branch1 + i);
        frame.shown[i] = b + (1.0f - b) * modWheel * wheelScale;
    }
    frame.cloned = record.cloned;
    const float atonality = record.param(Param::Atonality);
    frame.rootTwist = plantTwist(shape.rootMinTwist, shape.rootMaxTwist, atonality);

    renderer.seed = record.seed;
    renderer.radius = std::min(bounds.width, bounds.height) / 2;
    renderer.growthLimit = 10000.0f;
    renderer.rotationOffset = 0.0f;
    renderer.twigTwist = plantTwist(shape.twigMinTwist, shape.twigMaxTwist, atonality);
    return frame;
}

}  // namespace views
