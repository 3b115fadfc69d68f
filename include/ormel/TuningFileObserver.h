// What the reader of tuning documents tells of its reading.
#pragma once

#include <ormel/DocumentElements.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ormel {

class ValueSetter;

/** An element that the reader reads as what it is, not as a parameter. */
struct DocumentSection {
    DocumentElement kind = {};
    /** Its number, see TuningFileObserver. */
    uint32_t element = 0;
    /**
     * Place of its object among those of its class in this document, in the order of DeviceData's
     * sets: of a preset, profile, endpoint or device, and of a tuning and its data. No object comes
     * of a tuning without data, nor of a preset of unknown type. 0 for other elements.
     */
    size_t object = 0;
    /**
     * Set in what follows onSection(): the element, or the tuning's data, has no children, and what
     * the reader takes for them are the element itself and its siblings behind it.
     */
    bool isChildless = false;
};

/**
 * Listens to a TuningFileParser. The operations are called while it reads, in the order of its
 * reading and on its thread, and must not throw nor use the parser.
 *
 * Elements are numbered by their start tags in document order, the root being 0; what a reference
 * to an entity stands for is not counted. A processing instruction or a reference that bears an
 * element's name is read like a childless element and has the number kNoElement.
 *
 * An element is reported more than once where the reader comes to it more than once, which it does
 * behind childless ones. A document that is refused is reported as far as it was read.
 */
class TuningFileObserver {
  public:
    static constexpr uint32_t kNoElement = UINT32_MAX;

    /** Why an element was passed over. */
    enum class Reason : uint8_t {
        /** No section, preset type or parameter of that name is known where it stands. */
        UNKNOWN,
        /** The same of one that was taken for a child of a childless section. */
        STRAY,
        /** A tuning without data. The reading ends at it: what stands behind it is not reported. */
        NO_DATA,
    };

    virtual ~TuningFileObserver() = default;

    /**
     * A section begins. Versions and settings come first, wherever they stand. An include comes
     * right behind the profile or endpoint that it chooses a preset for; among the parameters there
     * it is passed over like one that chooses none.
     */
    virtual void onSection(const DocumentSection& /* section */) {}

    /**
     * A parameter of a section is read. A preset's own element is its only one.
     *
     * @param setter reads the element; lives as long as the process
     */
    virtual void onParameter(const DocumentSection& /* section */, ValueSetter& /* setter */,
                             uint32_t /* element */) {}

    /** A setting is read, the attribute @p name of a section GLOBAL_SETTING. */
    virtual void onSetting(const DocumentSection& /* section */, std::string_view /* name */) {}

    virtual void onPassedOver(uint32_t /* element */, Reason /* reason */) {}
};

}  // namespace ormel
