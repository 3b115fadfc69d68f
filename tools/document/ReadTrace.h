// What the library's reader does with a tuning document, element by element.
#pragma once

#include <ormel/DeviceData.h>
#include <ormel/TuningFileParser.h>
#include <ormel/ValueSetter.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

namespace ormel::tools {

/** What the reader took an element for. */
enum class ReadAs : uint8_t {
    NOTHING,
    VERSION,
    SETTING,
    PRESET,
    PROFILE,
    ENDPOINT,
    INCLUDE,
    TUNING,
    DEVICE,
    /** An element that a setter reads into the values of a section. */
    PARAMETER,
    /** Within such an element or within a preset. */
    BAND,
    ROW,
};

/** The class of objects that a section's parameters go to; NONE for presets and others. */
ParameterOwner ownerOf(ReadAs section);

/** What the reader did with one element of the document. */
struct ReadElement {
    /** Its place in document order, from 0. */
    size_t index = 0;
    /** Where its start tag begins. */
    long line = 0;
    ReadAs as = ReadAs::NOTHING;
    /** Whether the reader came across it and looked at its name. */
    bool isNamed = false;
    /** Whether the reader went on to its children, passing over the first of them. */
    bool isEntered = false;
    /** Whether the reader wanted to, found none, and read on from the element itself. */
    bool isStray = false;
    /** Whether every attribute counted, or only the first, whatever their names. */
    bool isReadWhole = false;
    bool isReadFirst = false;
    /** Names of the attributes that were asked for; null where none were by name. */
    const std::set<std::string>* attributes = nullptr;
    /** The setter that read it as a parameter, or in whose parameter it is a band or row. */
    ValueSetter* setter = nullptr;
    /** Index of the section that was being read, or that begins here; none: kNoSection. */
    size_t section = kNoSection;

    static constexpr size_t kNoSection = static_cast<size_t>(-1);
    static constexpr size_t kNoElement = static_cast<size_t>(-1);
};

/** A part of the document that one object came from. */
struct ReadSection {
    ReadAs as;
    /** Index of its element. */
    size_t element;
    /** The object, DeviceTuning for a device; null where none came of it. */
    const void* object = nullptr;
    /** By parameter the index of the element that fed it last. */
    std::map<Parameter, size_t> givers;
    /** The same of what stands outside the section, for an endpoint in its profile. */
    std::map<Parameter, size_t> outerGivers;
    /**
     * Elements that are no part of the section but were read into it, since the reader found no
     * children where it wanted to go on.
     */
    size_t strays = 0;
};

/** What is thrown for a document that the library refuses. */
class RefusedDocument : public std::runtime_error {
  public:
    RefusedDocument(const std::string& what, long line) : std::runtime_error(what), mLine(line) {}

    /** The line that the reader had come to. */
    long getLine() const { return mLine; }

  private:
    long mLine;
};

/** The bytes of a document. Throws std::runtime_error for anything but a readable regular file. */
std::string readDocument(const std::string& path);

/**
 * The document as the library's own reader sees it, and where everything in it comes from.
 *
 * The reader itself is watched, so that what is said of a document is what becomes of it. Only one
 * document may be read at a time in a process.
 */
class ReadTrace {
  public:
    /** Reads a document. Throws std::runtime_error if it cannot be read, RefusedDocument if the
     * library refuses it. */
    explicit ReadTrace(const std::string& path);

    /** The same with the document's bytes, which @p path is named for in errors. */
    ReadTrace(const std::string& path, const std::string& text);

    ReadTrace(const ReadTrace&) = delete;
    ReadTrace& operator=(const ReadTrace&) = delete;
    ~ReadTrace();

    /** The content of the document. Lives as long as the trace. */
    DeviceData& getDocument();

    /**
     * Line of the element that gave an object of the document its values of a parameter; 0 where
     * none did, since they are a default's or a version rule's.
     */
    long lineOf(const ParameterValues& object, Parameter param) const;

    /** That element itself; null where there is none. */
    const ReadElement* giverOf(const ParameterValues& object, Parameter param) const;

    /** Line of an object's own section; 0 where unknown. */
    long lineOf(const ParameterValues& object) const;
    long lineOf(const DeviceTuning& object) const;

    /** In document order: the k-th start tag of the document is the k-th element. */
    const std::deque<ReadElement>& getElements() const;

    /** In the order in which the reader came across them. */
    const std::vector<ReadSection>& getSections() const;

    /** Index of the tuning without data that the reader stopped at; kNoSection if it did not. */
    size_t getStop() const;

  private:
    class Walker;

    void matchObjects();
    template <typename Objects, typename Predicate>
    void match(const Objects& objects, Predicate isTheirs);
    const ReadElement* startOf(const ReadSection* section) const;
    const ReadSection* sectionOf(const void* object) const;

    /** The parser's. */
    Walker* mWalker = nullptr;
    std::unique_ptr<TuningFileParser> mParser;
    std::unordered_map<const void*, const ReadSection*> mSectionOfObject;
};

/** The lines on which a well-formed document's start tags begin, in document order. */
std::vector<long> startTagLines(const std::string& text);

}  // namespace ormel::tools
