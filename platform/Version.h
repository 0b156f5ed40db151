// The product's name, version and build number.
#pragma once

namespace platform {

inline constexpr const char* kProductName = "Tendrane";
inline constexpr const char* kVersionString = "1.0.0";
inline constexpr const char* kBuildNumber = "140";
inline constexpr int kVersionNumber = 1;  // the version the host sees

}  // namespace platform
