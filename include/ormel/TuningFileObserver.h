// Callbacks from the reader of tuning documents.
#pragma once

#include <ormel/DocumentElements.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ormel {

class ValueSetter;

/** An element of the document's structure, as opposed to a parameter. */
struct DocumentSection {
    DocumentElement kind = {};
    /** Its number; see TuningFileObserver. */
    uint32_t element = 0;
    /**
     * Index of its object among this document's objects of that class, in the order of DeviceData's
     * sets. Presets, profiles, endpoints, devices, tunings and tuning data have one; it is 0 for
     * other elements. A tuning without data makes no object, nor does a preset of unknown type.
     */
    size_t object = 0;
    /**
     * Set only in calls after onSection(). The element, or the tuning's data, has no children, so
     * the reader takes the element itself and the siblings after it for its children.
     */
    bool isChildless = false;
};

/**
 * Listens to a TuningFileParser. The operations are called while it reads, in reading order and on
 * its thread. They must not throw or use the parser.
 *
 * Elements are numbered by start tag in document order, from 0 for the root. The contents of entity
 * references are not counted. A processing instruction or entity reference with an element's name
 * is read like a childless element and has the number kNoElement.
 *
 * The reader may reach an element more than once, after childless ones; it is then reported each
 * time. A refused document is reported as far as it was read.
 */
class TuningFileObserver {
  public:
    static constexpr uint32_t kNoElement = UINT32_MAX;

    /** Why an element was passed over. */
    enum class Reason : uint8_t {
        /** Not the name of a section, preset type or parameter that is known at this place. */
        UNKNOWN,
        /** The same, and taken for a child of a childless section. */
        UNEXPECTED_CHILD,
        /** A tuning without data. Reading ends there: nothing after it is reported. */
        NO_DATA,
    };

    virtual ~TuningFileObserver() = default;

    /**
     * A section begins. Versions and settings are reported first, wherever they are in the
     * document; settings that the format version leaves unread are not reported at all.
     *
     * An include that selects a preset is reported right after its profile or endpoint. Among the
     * parameters it is then passed over, like one that selects none.
     */
    virtual void onSection(const DocumentSection& /* section */) {}

    /**
     * A parameter of a section is read. A preset has one: its own element.
     *
     * @param setter reads the element; lives as long as the process
     */
    virtual void onParameter(const DocumentSection& /* section */, ValueSetter& /* setter */,
                             uint32_t /* element */) {}

    /** A setting is read: attribute @p name of a GLOBAL_SETTING section. */
    virtual void onSetting(const DocumentSection& /* section */, std::string_view /* name */) {}

    virtual void onPassedOver(uint32_t /* element */, Reason /* reason */) {}
};

}  // namespace ormel
