// Documents made to be costly to read.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ormel::fuzz {

/** What a correct load of a document adds to the store. */
struct Reading {
    int profiles = 0;
    int tunings = 0;
};

/** A piece of a document's text. */
struct Part {
    enum class Kind { OTHER, PROFILE, TUNING };

    /** '@' is replaced by the number of the copy. */
    std::string text;
    /** Percentage of the document that copies fill; 0 for a single copy. */
    int percent = 0;
    /** Whether each copy is a profile, or a device tuning that the store keeps. */
    Kind kind = Kind::OTHER;
};

/** A kind of document. */
struct HostileShape {
    std::string name;
    std::vector<Part> parts;
    /** Applied to the finished text; may be null. */
    std::string (*encode)(const std::string& text) = nullptr;
};

struct HostileDocument {
    std::string text;
    Reading reading;
};

/** All shapes, with unique names. */
std::vector<HostileShape> hostileShapes();

/** A document of about @p size bytes, or of the shape's minimum size. */
HostileDocument makeHostile(const HostileShape& shape, size_t size);

std::string utf16(const std::string& text);

}  // namespace ormel::fuzz
