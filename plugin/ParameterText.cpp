#include "plugin/ParameterText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "patch/ParameterTable.h"

namespace ParameterText {

namespace {

const char* const LABELS[PARAM_COUNT] = {
    "%", "degrees", "", "%", "%", "", "%", "%", "dB",
    "%", "%", "%", "%", "%", "%", "%", "%", "%", "%", "%", "%",
};

// Numbers this close to zero print as zero (no "-0.00").
double snap(double v) { return std::fabs(v) < 1e-5 ? 0.0 : v; }

std::string format(const char* pattern, double a, double b = 0.0) {
    char text[64];
    std::snprintf(text, sizeof text, pattern, a, b);
    return text;
}

std::string tuningText(double x, bool fine) {
    const double s = snap(12.0 * (2.0 * x - 1.0));
    if (std::fabs(s) >= 1.0) return format(fine ? "%+.8f sm" : "%+.2f sm", s);
    return format(fine ? "%+.8f ct" : "%+.0f ct", snap(100.0 * s));
}

std::string effectText(double x, bool fine, bool detail) {
    const double amount = snap(200.0 * x - 100.0);
    if (detail) {
        const double p = snap(std::clamp(400.0 * x - 100.0, 0.0, 100.0));
        if (p < 100.0) return format(fine ? "%+.8f%% (%.8f%% panning)" : "%+.2f%% (%.0f%% panning)", amount, p);
    }
    return format(fine ? "%+.8f%%" : "%+.2f%%", amount);
}

std::string releaseText(double x, bool fine, bool detail) {
    const double t = 0.05 * std::pow(400.0, x);
    const bool seconds = t >= 1.0;
    const double shown = snap(seconds ? t : 1000.0 * t);
    if (detail) {
        const double g = snap(std::max(100.0 - 400.0 * x, 0.0));
        if (g > 0.0) {
            if (seconds) return format(fine ? "%.8f s (%.8f%% gating)" : "%.2f s (%.0f%% gating)", shown, g);
            return format(fine ? "%.8f ms (%.8f%% gating)" : "%.2f ms (%.0f%% gating)", shown, g);
        }
    }
    if (seconds) return format(fine ? "%.8f s" : "%.2f s", shown);
    return format(fine ? "%.8f ms" : "%.2f ms", shown);
}

// 0.5 is 0 dB and 1.0 is +20 dB: the decibels of the output gain
// 10 x^log2(10), which come to 20 log2(2x).
std::string volumeText(double x, bool fine) {
    if (x < 1e-5) return "-inf";
    return format(fine ? "%.8f" : "%.2f", snap(20.0 * std::log2(2.0 * x)));
}

}  // namespace

const char* name(int index) {
    if (index < 0 || index >= PARAM_COUNT) return "";
    return PARAMETER_TABLE[index].name.data();
}

const char* label(int index) {
    if (index < 0 || index >= PARAM_COUNT) return "";
    return LABELS[index];
}

std::string display(int index, float value, bool fine, bool detail) {
    const double x = value;
    const char* plain = fine ? "%.8f" : "%.2f";
    switch (index) {
    case Param::Rotation:
        return format(plain, snap(360.0 * x));
    case Param::Tuning:
        return tuningText(x, fine);
    case Param::Effect:
        return effectText(x, fine, detail);
    case Param::Release:
        return releaseText(x, fine, detail);
    case Param::Volume:
        return volumeText(x, fine);
    default:
        if (index < 0 || index >= PARAM_COUNT) return {};
        return format(plain, snap(100.0 * x));
    }
}

}  // namespace ParameterText
