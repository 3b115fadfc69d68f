// Small tuning documents; packed lists, calls and messages as text, one line each.
#pragma once

#include <ormel/Translator.h>
#include <ormel/Tuning.h>

#include <cstring>

#include "LogCapture.h"
#include "RecordingEffect.h"

namespace ormel::test {

using Values = std::vector<int32_t>;
constexpr int32_t kAll = 0x40000000;

/** A whole document. Its elements need a blank before their first child element. */
inline std::string document(const std::string& children) {
    return "<d> <format_version major='3' minor='4' maintenance='0'/>" + children + "</d>";
}

/** A tuning with one device, on the internal speaker port. */
inline std::string tuning(const std::string& attributes, const std::string& device,
                          const std::string& data) {
    return "<tuning " + attributes + "> <device_id id='" + device +
           "' endpoint_port='internal_speaker'/>" + data + "</tuning>";
}

inline std::string mixMatrix(const std::string& row) {
    return "<data> <output-mode> <m> <r v='" + row + "'/></m></output-mode></data>";
}

/** Tests use these parameters. Their entries must not depend on parameters added after them. */
constexpr int32_t kFirstParameterCount = 106;
constexpr int32_t kFirstKivParameterCount = 90;

/** Whether a code belongs to a parameter that was added later. */
inline bool isAddedCode(int32_t code) {
    Tuning source("", ENDPOINT_OTHER, false);
    SetParamCommand command(0);
    for (auto param = kFirstParameterCount; param < static_cast<int32_t>(kParameterCount);
         ++param) {
        TranslatorCollection& registry = *ParameterTranslator::sTranslatorCollection;
        if (Translator* const translator = registry.getTranslator(Parameter{param})) {
            translator->kivTranslate(command, source, ENDPOINT_OTHER, false);
        }
    }
    const std::vector<int32_t>& words = command.mParams;
    size_t at = 2;
    while (at < words.size() && words[at + 1] != code) {
        at += 3 + static_cast<size_t>(words[at + 2]);
    }
    return at < words.size();
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

/**
 * A list's header, as an entry named "list", and its entries. Entries of parameters added later are
 * left out and not counted.
 */
template <typename List>
std::string listText(const List& words) {
    int32_t count = words.at(1);
    std::string lines;
    for (auto at = words.begin() + 2; at < words.end(); at += 3 + at[2]) {
        if (isAddedCode(at[1])) {
            --count;
        } else {
            lines += entry(at[0], lettersOf(at[1]), {at + 3, at + 3 + at[2]});
        }
    }
    return entry(words.at(0), "list", {count}) + lines;
}

/** Messages with priority and short tag, such as "D Array: load()" for OrmSpatializerParamArray. */
inline std::string text(const std::vector<LogLine>& messages) {
    constexpr char kPrefix[] = "OrmSpatializerParam";
    std::string lines;
    for (const auto& [priority, tag, message] : messages) {
        const bool isPrefixed = tag.rfind(kPrefix, 0) == 0;
        lines += {"??VDIWEF"[priority], ' '};
        lines += tag.substr(isPrefixed ? std::strlen(kPrefix) : 0) + ": " + message + '\n';
    }
    return lines;
}

}  // namespace ormel::test
