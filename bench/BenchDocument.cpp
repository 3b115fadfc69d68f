#include "BenchDocument.h"

#include <string_view>

namespace ormel::bench {

namespace {

constexpr int kIdsPerRound = 4;

/** Adds @p offset to the number, or appends it to the name, that follows each @p marker. */
void renew(std::string& text, std::string_view marker, int offset) {
    for (size_t at = text.find(marker); at != std::string::npos; at = text.find(marker, at)) {
        at += marker.size();
        const size_t end = text.find('"', at);
        const std::string old = text.substr(at, end - at);
        const bool isNumber = old.find_first_not_of("0123456789") == std::string::npos;
        const std::string renewed = isNumber ? std::to_string(std::stoi(old) + offset)
                                             : old + "_" + std::to_string(offset);
        text.replace(at, end - at, renewed);
    }
}

}  // namespace

std::string growDocument(const std::string& seed, size_t size) {
    const size_t begin = seed.find("<preset");
    const size_t end = seed.rfind("</tuning>") + std::string_view("</tuning>").size();
    const std::string sections = seed.substr(begin, end - begin);
    std::string document = seed.substr(0, begin) + sections;
    for (int offset = kIdsPerRound; document.size() < size; offset += kIdsPerRound) {
        std::string round = sections;
        for (const char* const marker :
             {"<preset id=\"", "<profile id=\"", "<include ieq_preset=\"", "<tuning name=\"",
              "<device_id id=\""}) {
            renew(round, marker, offset);
        }
        document += "\n    " + round;
    }
    return document + seed.substr(end);
}

}  // namespace ormel::bench
