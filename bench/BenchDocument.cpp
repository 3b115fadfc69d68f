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

/** Erases every section from @p at on that starts with @p marker, up to its closing tag. */
void eraseSections(std::string& text, const std::string& marker, const std::string& closing,
                   size_t at) {
    for (at = text.find(marker, at); at != std::string::npos; at = text.find(marker, at)) {
        text.erase(at, text.find(closing, at) + closing.size() - at);
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

std::string shrinkDocument(const std::string& seed) {
    std::string document = seed;
    for (const char* const id : {"1", "2", "3"}) {
        for (const std::string kind : {"preset", "profile"}) {
            const std::string marker = "<" + kind + " id=\"" + id;
            eraseSections(document, marker, "</" + kind + ">", 0);
        }
    }
    eraseSections(document, "<tuning ", "</tuning>", document.find("</tuning>"));
    return document;
}

}  // namespace ormel::bench
