// Documents that were made to cost their reader much.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ormel::fuzz {

/** What a right reading of a document adds to the store. */
struct Reading {
    int profiles = 0;
    int tunings = 0;
};

/** A piece of a document's text. */
struct Part {
    enum class Kind { OTHER, PROFILE, TUNING };

    /** In each copy, '@' stands for the copy's number. */
    std::string text;
    /** Copies fill so many hundredths of the document; with 0 the part stands once. */
    int percent = 0;
    /** Whether each copy is a profile, or a device tuning that the store keeps. */
    Kind kind = Kind::OTHER;
};

/** A kind of document. */
struct HostileShape {
    std::string name;
    std::vector<Part> parts;
    /** What becomes of the text at last; null for nothing. */
    std::string (*encode)(const std::string& text) = nullptr;
};

struct HostileDocument {
    std::string text;
    Reading reading;
};

/** All shapes, each under a name of its own. */
std::vector<HostileShape> hostileShapes();

/** A document of about @p size bytes, or of the shape's least size. */
HostileDocument makeHostile(const HostileShape& shape, size_t size);

std::string utf16(const std::string& text);

}  // namespace ormel::fuzz
