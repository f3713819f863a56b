#pragma once
// The wire model of the help window: a three-bar emblem as 65 straight lines
// with a front outline, a back outline and the edges between them, turned
// about its three axes and projected onto Picture1. The stored values and
// the angles are 32-bit floats; the turns run in 64 bits and the projection
// is rounded back to 32 bits, so that a pose always lands on the same twips.
#include <array>
#include <cstdint>

namespace velmoric {

struct ModelLine {
    float x1, y1, z1, x2, y2, z2;
};

inline constexpr int kModelLineCount = 65;
using ModelLines = std::array<ModelLine, kModelLineCount>;

// Lines 0 to 26 outline the front face, 27 to 52 the back face, 53 to 64
// are the edges in depth. Up is positive y; a larger z lies further away.
const ModelLines& wireModel();

// One step of 7.5 degrees, in radians.
inline constexpr double kAngleStep = 0.13089969;
// 2 pi as a 32-bit float: the top of an angle's range.
inline constexpr float kFullTurn = 6.2831855f;

// The angle one step on. A rising angle that reaches a full turn starts
// again at 0; a falling one that reaches 0 or less goes to a full turn.
float stepAngle(float angle, bool rising);

// The sines and cosines of a pose, taken once for the 130 points of a frame.
struct Turn {
    double sx, cx, sy, cy, sz, cz;
};
Turn turnFor(float anglex, float angley, float anglez);

// A point on Picture1, in twips from its top left corner.
struct PlacedPoint {
    float left, top;
};

// Where the centre of the model lands: half of Picture1's size, cut to
// whole twips. Fixed, whatever size the box has.
inline constexpr float kCentreLeft = 3247;
inline constexpr float kCentreTop = 1807;

// Turns a point about Y, then X, then Z, projects it at `projscale` from
// `projdist` and places it on the box.
PlacedPoint placePoint(float x, float y, float z, const Turn& turn, float projscale, float projdist);

}  // namespace velmoric
