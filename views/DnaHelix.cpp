#include "views/DnaHelix.h"

#include <cmath>

namespace views {

double dnaBallRadius(const DnaHelixShape& shape, double depth) {
    return shape.minSize + (shape.maxSize - shape.minSize) * (depth + 1.0) / 2.0;
}

DnaRung dnaRungAt(const DnaHelixShape& shape, double position) {
    const double a = shape.phase + position * shape.twist;
    const double s = std::sin(a), c = std::cos(a);
    DnaRung r;
    r.position = position;
    r.y = shape.firstY + position * shape.height;
    const double side[2] = {1.0, -1.0};
    for (int k = 0; k < 2; ++k) {
        DnaEnd& e = r.ends[k];
        e.x = shape.centreX + side[k] * shape.width / 2.0 * s;
        e.y = r.y + side[k] * shape.turn / 2.0 * c;
        e.depth = side[k] * c;
        e.radius = dnaBallRadius(shape, e.depth);
    }
    return r;
}

std::vector<DnaRailRun> dnaRails(const DnaHelixShape& shape, double from, double to, int steps) {
    std::vector<DnaRailRun> runs;
    if (!(to > from) || steps < 1) return runs;
    const int count = int(std::ceil((to - from) * steps));
    for (int rail = 0; rail < 2; ++rail) {
        DnaRailRun run;
        run.rail = rail;
        for (int i = 0; i <= count; ++i) {
            const double position = i == count ? to : from + double(i) / steps;
            const DnaEnd e = dnaRungAt(shape, position).ends[rail];
            const bool front = e.depth > 0.0;
            if (i == 0) {
                run.front = front;
            } else if (front != run.front) {
                // The run ends with the piece that crosses the axis; the
                // next begins at its end, so the rail stays whole.
                run.points.push_back(e.x);
                run.points.push_back(e.y);
                runs.push_back(std::move(run));
                run = DnaRailRun{rail, front, {}};
            }
            run.points.push_back(e.x);
            run.points.push_back(e.y);
        }
        if (run.points.size() >= 4) runs.push_back(std::move(run));
    }
    return runs;
}

}  // namespace views
