// One frame of the plant as plain data: the lines in the order they are
// drawn, each with its branch, twig generation, colour, start alpha, points
// and merged pieces. The renderer fills it; the line painter and
// `tendrane inspect --plant` read it. Its storage is kept from frame to
// frame, so a swaying plant allocates nothing once it has grown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace views {

struct PlantPoint {
    double x = 0.0;
    double y = 0.0;
};

// A straight piece drawn from point `first` to point `last` of its line,
// with the line's colour scaled by `byte`.
struct PlantPiece {
    int first = 0;
    int last = 0;
    std::uint8_t byte = 0;
};

struct PlantLine {
    int branch = 0;       // 0 to 11
    int generation = 0;   // 0 for a branch, 1 for its twigs...
    std::uint8_t red = 0, green = 0, blue = 0;
    float alpha = 0.0f;   // the line's start alpha
    std::size_t firstPoint = 0, pointCount = 0;
    std::size_t firstPiece = 0, pieceCount = 0;
};

class PlantGeometry {
public:
    void clear() {
        lines_.clear();
        points_.clear();
        pieces_.clear();
    }

    const std::vector<PlantLine>& lines() const { return lines_; }
    std::span<const PlantPoint> points(const PlantLine& line) const {
        return {points_.data() + line.firstPoint, line.pointCount};
    }
    std::span<const PlantPiece> pieces(const PlantLine& line) const {
        return {pieces_.data() + line.firstPiece, line.pieceCount};
    }
    std::size_t pointTotal() const { return points_.size(); }

    // Appends a line: its points are copied, and its pieces follow with
    // addPiece until the next line begins.
    PlantLine& addLine(const PlantLine& line, std::span<const PlantPoint> points) {
        PlantLine& added = lines_.emplace_back(line);
        added.firstPoint = points_.size();
        added.pointCount = points.size();
        points_.insert(points_.end(), points.begin(), points.end());
        added.firstPiece = pieces_.size();
        added.pieceCount = 0;
        return added;
    }
    void addPiece(const PlantPiece& piece) {
        pieces_.push_back(piece);
        ++lines_.back().pieceCount;
    }

private:
    std::vector<PlantLine> lines_;
    std::vector<PlantPoint> points_;
    std::vector<PlantPiece> pieces_;
};

}  // namespace views
