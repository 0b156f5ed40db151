// x' = a*x + b*y + c, y' = d*x + e*y + f.
#pragma once

namespace OrlPixels {

struct AffineTransformation {
    double a = 1, b = 0, c = 0, d = 0, e = 1, f = 0;

    AffineTransformation() = default;
    AffineTransformation(double a_, double b_, double c_, double d_, double e_, double f_)
        : a(a_), b(b_), c(c_), d(d_), e(e_), f(f_) {}

    static AffineTransformation identity() { return AffineTransformation(); }
    static AffineTransformation translation(double dx, double dy) { return AffineTransformation(1, 0, dx, 0, 1, dy); }
    static AffineTransformation scaling(double sx, double sy) { return AffineTransformation(sx, 0, 0, 0, sy, 0); }
    static AffineTransformation rotation(double radians);

    void apply(double& x, double& y) const {
        const double nx = a * x + b * y + c;
        const double ny = d * x + e * y + f;
        x = nx;
        y = ny;
    }

    // First this, then `next`.
    AffineTransformation then(const AffineTransformation& next) const;

    // Fails (returns false, leaves `out` alone) when |a*e - b*d| is below 1e-8.
    bool invert(AffineTransformation& out) const;
};

}  // namespace OrlPixels
