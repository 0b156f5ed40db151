// The geometry of the DNA molecule: where each rung's two ends stand, how
// near they are, and the rails that join them.
//
// The helix is seen from a little above. Rung i (0 for the first gene) has
// the angle a = phase + i * twist and its centre at
//     (centreX, firstY + i * height)
// Its first end stands at
//     x = centreX + width / 2 * sin(a),  y = centre y + turn / 2 * cos(a)
// with the depth cos(a) (1 nearest to the eye, -1 farthest), and its second
// end on the opposite side: -sin(a), -cos(a), depth -cos(a). So the ends of
// a rung go round an ellipse `width` wide and `turn` tall, and a near end
// stands lower than a far one. A rung's ball grows linearly with its depth
// from the smallest size (far) to the largest (near). The rails are the
// same formula with i running continuously, from `railsExtra` rungs before
// the first to `railsExtra` after the last.
#pragma once

#include <vector>

namespace views {

struct DnaHelixShape {
    double centreX = 0.0;   // panel x of the rungs' centres
    double firstY = 0.0;    // panel y of the first rung's centre
    double width = 92.0;    // helixWidth
    double height = 16.0;   // helixHeight: between rungs
    double twist = 0.9;     // helixTwist: radians per rung
    double turn = 20.0;     // helixTurn: the ellipse's height
    double phase = 1.0;     // the first rung's angle, radians
    double minSize = 5.0;   // ball radius, far
    double maxSize = 5.5;   // ball radius, near
};

struct DnaEnd {
    double x = 0.0, y = 0.0;
    double depth = 0.0;   // -1 far to 1 near
    double radius = 0.0;
};

struct DnaRung {
    double position = 0.0;  // the rung's number along the helix, may be fractional
    double y = 0.0;         // the centre's y
    DnaEnd ends[2];
};

// The rung (or rail point) at a position along the helix.
DnaRung dnaRungAt(const DnaHelixShape& shape, double position);

// A ball's radius at a depth.
double dnaBallRadius(const DnaHelixShape& shape, double depth);

// One piece of a rail: consecutive points that lie all in front of the
// axis (depth above 0) or all behind it.
struct DnaRailRun {
    int rail = 0;           // 0 or 1
    bool front = false;
    std::vector<double> points;  // x0, y0, x1, y1, ...
};

// The two rails from position `from` to `to`, with `steps` points per rung,
// cut where they pass the axis, so that the runs behind can be drawn before
// the rungs and the runs in front after them. A run starts at the point
// where the previous one ended.
std::vector<DnaRailRun> dnaRails(const DnaHelixShape& shape, double from, double to, int steps);

}  // namespace views
