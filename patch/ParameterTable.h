// The 21 global parameters of a record: names (the keys of the patch text and
// the script object) and Init values. Twelve of them are the branch lengths.
#pragma once

#include <string_view>

constexpr int PARAM_COUNT = 21;
constexpr int BRANCH_COUNT = 12;

// Parameter indices: Param::Tuning, Param::Branch1 + k...
namespace Param {
enum : int {
    ModWheel, Rotation, Tuning, Atonality, Effect, Release, WheelScale, VelSens, Volume,
    Branch1, Branch2, Branch3, Branch4, Branch5, Branch6, Branch7, Branch8, Branch9, Branch10,
    Branch11, Branch12
};
}  // namespace Param

struct ParameterInfo {
    std::string_view name;
    float initValue;
};

extern const ParameterInfo PARAMETER_TABLE[PARAM_COUNT];

// The index of the parameter of that name (exact, case-sensitive), or -1.
int findParameter(std::string_view name);
