// What the library's reader does with a tuning document, element by element.
#pragma once

#include <ormel/DeviceData.h>
#include <ormel/TuningFileParser.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "XmlElements.h"

namespace ormel::tools {

/** What the reader did with one element of the document. */
struct ReadElement {
    enum class As : uint8_t {
        NOTHING,
        /** What its kind says. */
        SECTION,
        /** An element that a setter reads into the values of a section. */
        PARAMETER,
        /** Within such an element or within a preset. */
        BAND,
        ROW,
    };

    static constexpr uint32_t kNoSection = UINT32_MAX;

    bool is(DocumentElement wanted) const { return as == As::SECTION && kind == wanted; }

    As as = As::NOTHING;
    DocumentElement kind = {};
    /** Whether the reader came across it and looked at its name. */
    bool isNamed = false;
    /** Whether the reader went on to its children, passing over the first of them. */
    bool isEntered = false;
    /** Whether the reader looked for children, found none, and read on from the element itself. */
    bool isChildless = false;
    /** Index of the section that was being read, or that begins here. */
    uint32_t section = kNoSection;
    /** The setter that read it as a parameter, or in whose parameter it is a band or row. */
    ValueSetter* setter = nullptr;
};

/** A part of the document that one object came from. */
struct ReadSection {
    static constexpr size_t kNoElement = SIZE_MAX;
    using Sources = std::vector<std::pair<Parameter, uint32_t>>;

    /** The element that gave a parameter last, of those before @p end; kNoElement for none. */
    size_t sourceOf(Parameter param, size_t end = kNoElement) const;
    void addSources(const ValueSetter& setter, size_t element);

    DocumentElement kind;
    /** The class of its object; NONE for a device. */
    ParameterOwner owner;
    /** Number of its element. */
    uint32_t element;
    /** Place of its object among those of its class. */
    size_t place;
    /** Of an endpoint, the section that it was read in. */
    uint32_t outer;
    /** The object, DeviceTuning for a device; null where none came of it. */
    const void* object = nullptr;
    /** In the order of reading, the elements that gave parameters. */
    Sources sources = {};
    /** Number of elements after the section that were read into it, since it has no children. */
    size_t unexpectedChildren = 0;
};

/** Thrown for a document that the library refuses. */
struct RefusedDocument : std::runtime_error {
    RefusedDocument(const std::string& what, long reached)
        : std::runtime_error(what), line(reached) {}
    /** The line that the reader had come to; 0 when it had not begun. */
    long line;
};

/** The document as the library's own reader says that it reads it. */
class ReadTrace : private TuningFileObserver {
  public:
    /**
     * Reads a document from its bytes. Its elements must outlive this. Throws RefusedDocument,
     * which names it by the path.
     */
    ReadTrace(const std::string& path, const std::string& text, const XmlElements& elements);

    /** The content of the document. Lives as long as the trace. */
    DeviceData& getDocument() const { return *mParser.getDeviceData(); }

    /**
     * Number of the element that gave an object its values of a parameter; kNoElement where none
     * did, since they are a default's or a version rule's.
     */
    size_t sourceOf(const ParameterValues& object, Parameter param) const;

    /** Line of that element, and of an object's own section; 0 where there is none. */
    long lineOf(const ParameterValues& object, Parameter param) const;
    long lineOf(const void* object) const;

    /** By number. */
    const std::vector<ReadElement>& getElements() const { return mElements; }
    /** In the order in which the reader came across them. */
    const std::vector<ReadSection>& getSections() const { return mSections; }
    /** Index of the tuning without data that the reader stopped at; kNoSection if it did not. */
    uint32_t getStop() const { return mStop; }

  private:
    void onSection(const DocumentSection& section) override;
    void onParameter(const DocumentSection& section, ValueSetter& setter,
                     uint32_t element) override;
    void onPassedOver(uint32_t element, Reason reason) override;

    ReadElement* come(uint32_t element);
    void beginSection(const DocumentSection& section, ParameterOwner owner);
    void noteEntry(size_t element);
    void findBands(size_t element, ValueSetter& setter);

    const XmlElements& mXml;
    std::vector<ReadElement> mElements;
    std::vector<ReadSection> mSections;
    uint32_t mStop = ReadElement::kNoSection;
    uint32_t mProfile = ReadElement::kNoSection;
    /** The line that the reader has come to. */
    long mReached = 0;
    /** What the settings give endpoints. */
    ReadSection::Sources mSettings;
    TuningFileParser mParser;
    std::unordered_map<const void*, const ReadSection*> mSectionOfObject;
};

}  // namespace ormel::tools
