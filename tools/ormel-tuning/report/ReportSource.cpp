#include "ReportSource.h"

#include <algorithm>
#include <sstream>

#include "text/Text.h"

namespace ormel::tools {

namespace {

/** Lines around one that is spoken of. */
constexpr long kContext = 2;
constexpr size_t kMaxLineLength = 400;

}  // namespace

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        line.erase(line.find_last_not_of('\r') + 1);
        std::replace(line.begin(), line.end(), '\t', ' ');
        if (line.size() > kMaxLineLength) {
            line.replace(kMaxLineLength, std::string::npos, " ...");
        }
        lines.push_back(printable(std::move(line)));
    }
    return lines;
}

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
