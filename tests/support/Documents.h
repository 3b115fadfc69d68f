// Small tuning documents, and packed lists, calls and messages as texts, a line each.
#pragma once

#include "LogCapture.h"
#include "RecordingEffect.h"

namespace ormel::test {

using Values = std::vector<int32_t>;
constexpr int32_t kAll = 0x40000000;

/** A whole document. Its elements must have a blank in front of their first child element. */
inline std::string document(const std::string& children) {
    return "<d> <format_version major='3' minor='4' maintenance='0'/>" + children + "</d>";
}

/** A tuning with one device, which is the internal speaker's. */
inline std::string tuning(const std::string& attributes, const std::string& device,
                          const std::string& data) {
    return "<tuning " + attributes + "> <device_id id='" + device +
           "' endpoint_port='internal_speaker'/>" + data + "</tuning>";
}

inline std::string mixMatrix(const std::string& row) {
    return "<data> <output-mode> <m> <r v='" + row + "'/></m></output-mode></data>";
}

/** The line of an entry or a call, such as "2:dom 1 0". */
inline std::string entry(int32_t device, const std::string& code, const Values& values) {
    std::string line = (device == kAll ? "all" : std::to_string(device)) + ":" + code;
    for (const int32_t value : values) {
        line += ' ' + std::to_string(value);
    }
    return line + '\n';
}

inline std::string text(const std::vector<Call>& calls) {
    std::string lines;
    for (const Call& call : calls) {
        lines += call.what == "get" ? "get " : "";
        lines += entry(call.device, call.what == "commit" ? "commit" : call.code, call.values);
    }
    return lines;
}

/** The entries of a list behind its header, which looks like an entry named "list". */
template <typename List>
std::string listText(const List& words) {
    std::string lines = entry(words.at(0), "list", {words.at(1)});
    for (auto at = words.begin() + 2; at < words.end(); at += 3 + at[2]) {
        lines += entry(at[0], lettersOf(at[1]), {at + 3, at + 3 + at[2]});
    }
    return lines;
}

/** Messages with the end of the tag and the priority ahead, such as "Array 3 load()". */
inline std::string text(const std::vector<LogLine>& messages) {
    std::string lines;
    for (const auto& [priority, tag, message] : messages) {
        lines += tag.substr(tag.size() - 5) + ' ' + std::to_string(priority) + ' ' + message + '\n';
    }
    return lines;
}

}  // namespace ormel::test
