#include "platform/ErrorAlert.h"

#include "platform/Exceptions.h"

#include <algorithm>

namespace platform {

std::string fillErrorCodes(std::string_view templateText, std::string_view error, std::string_view stack) {
    std::string out;
    out.reserve(templateText.size() + error.size() + stack.size());
    for (std::size_t i = 0; i < templateText.size(); ++i) {
        if (templateText[i] == '^' && i + 1 < templateText.size()) {
            const char code = templateText[i + 1];
            if (code == 'E' || code == 'S') {
                out += code == 'E' ? error : stack;
                ++i;
                continue;
            }
        }
        out += templateText[i];
    }
    return out;
}

ErrorAlert errorAlertFor(std::string_view message, const TextCatalogue& catalogue) {
    if (message.empty())
        return {std::string(errorAlertTitle), catalogue.translate(unexpectedErrorKey)};
    return {std::string(errorAlertTitle), fillErrorCodes(catalogue.translate(errorKey), message)};
}

ErrorAlert scriptErrorAlert(std::string_view message, std::string_view stackReport,
                            const TextCatalogue& catalogue) {
    return {std::string(errorAlertTitle),
            fillErrorCodes(catalogue.translate(scriptErrorKey), message, stackReport)};
}

std::optional<ErrorAlert> errorAlertForException(std::exception_ptr failure, const TextCatalogue& catalogue) {
    if (!failure)
        return std::nullopt;
    try {
        std::rethrow_exception(failure);
    } catch (const UserCancelledException&) {
        return std::nullopt;
    } catch (const std::exception& e) {
        return errorAlertFor(e.what(), catalogue);
    } catch (...) {
        return errorAlertFor({}, catalogue);
    }
}

std::string scriptErrorPositionLine(std::string_view source, std::size_t position) {
    constexpr std::size_t context = 20;
    position = std::min(position, source.size());
    const std::size_t start = position > context ? position - context : 0;
    std::string line = position > context ? "..." : "";
    line += source.substr(start, position - start);
    line += " <!> ";
    line += source.substr(position, context);
    line += '\n';
    return line;
}

}  // namespace platform
