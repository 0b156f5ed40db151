// The alerts' own entries of the string catalogue.
#include "platform/ErrorAlert.h"

#include <array>
#include <utility>

namespace platform {

namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 3> errorTexts{{
    {"Unexpected error", "The operation could not be performed due to an unknown / unexpected error."},
    {"Error: ^E", "The operation could not be performed due to the following error:\n^E."},
    {"Quol error: ^E\n^S", "Internal script-code error: ^E\n\nStack\n----------\n^S"},
}};

class BuiltInErrorTexts final : public TextCatalogue {
public:
    std::string translate(std::string_view key) const override {
        for (const auto& [k, text] : errorTexts)
            if (k == key)
                return std::string(text);
        return std::string(key);
    }
};

}  // namespace

const TextCatalogue& builtInErrorTexts() {
    static const BuiltInErrorTexts table;
    return table;
}

}  // namespace platform
