#include "patch/ParameterTable.h"

const ParameterInfo PARAMETER_TABLE[PARAM_COUNT] = {
    {"ModWheel", 0.0f},  {"Rotation", 0.0f},   {"Tuning", 0.5f},   {"Atonality", 0.5f},
    {"Effect", 0.5f},    {"Release", 0.25f},   {"WheelScale", 1.0f}, {"VelSens", 0.5f},
    {"Volume", 0.5f},    {"Branch1", 0.0f},    {"Branch2", 0.0f},  {"Branch3", 0.0f},
    {"Branch4", 0.0f},   {"Branch5", 0.0f},    {"Branch6", 0.0f},  {"Branch7", 0.0f},
    {"Branch8", 0.0f},   {"Branch9", 0.0f},    {"Branch10", 0.0f}, {"Branch11", 0.0f},
    {"Branch12", 0.0f},
};

int findParameter(std::string_view name) {
    for (int i = 0; i < PARAM_COUNT; ++i) {
        if (PARAMETER_TABLE[i].name == name) return i;
    }
    return -1;
}
