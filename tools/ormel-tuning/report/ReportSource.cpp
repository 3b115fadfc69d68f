#include "ReportSource.h"

#include <algorithm>

namespace ormel::tools {

namespace {

/** Lines around one that is spoken of. */
constexpr long kContext = 2;

}  // namespace

Json excerptJson(const std::vector<std::string>& lines, long line) {
    Json excerpt = Json::array();
    const auto last = static_cast<long>(lines.size());
    if (line < 1 || line > last) {
        return excerpt;
    }
    for (long at = std::max(1L, line - kContext); at <= std::min(last, line + kContext); ++at) {
        excerpt.push_back({{"number", std::to_string(at)},
                           {"text", lines[static_cast<size_t>(at - 1)]},
                           {"isPlace", at == line}});
    }
    return excerpt;
}

Json sourceJson(const std::vector<std::string>& lines,
                const std::map<long, std::string>& findingOfLine) {
    Json source = Json::array();
    for (const std::string& line : lines) {
        const auto number = static_cast<long>(source.size() + 1);
        const auto found = findingOfLine.find(number);
        source.push_back({{"number", std::to_string(number)}, {"text", line}, {"finding", false}});
        if (found != findingOfLine.end()) {
            source.back()["finding"] = found->second;
        }
    }
    return source;
}

}  // namespace ormel::tools
