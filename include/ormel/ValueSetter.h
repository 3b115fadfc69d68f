// The readers of a tuning document's parameter elements, and their registry.
#pragma once

#include <ormel/ParameterValues.h>
#include <ormel/TagIterator.h>

#include <array>
#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ormel {

struct SetterRow;

/**
 * Reads the parameter elements of one name into a tuning object.
 *
 * A setter has its own name and parameters, or refers to a row of the library's constant table.
 *
 * A setter keeps nothing between calls: one object serves every document, and set() may run on
 * several threads at once with different objects and iterators. Setters never fail: missing
 * attributes read as empty text, and empty text as 0 or as an empty row.
 */
class ValueSetter {
  public:
    virtual ~ValueSetter() = default;

    /** Name of the elements that this setter reads. */
    virtual std::string getNodeName();

    /**
     * Reads the element at the cursor of @p iterator and stores this setter's parameters in
     * @p values. The cursor ends where it was.
     */
    virtual void set(ParameterValues& values, TagIterator& iterator) = 0;

    /** The parameters that this setter stores, in that order. */
    std::vector<Parameter> getParams() const;

    /** The parameter at index @p i, which must be below getParamCount(). */
    Parameter getParam(size_t i) const;
    size_t getParamCount() const;

  protected:
    ValueSetter(std::string nodeName, std::vector<Parameter> params);
    explicit ValueSetter(const SetterRow& row) : mRow(&row) {}
    // Copied, never moved: a moved-from setter would have no row.
    ValueSetter(const ValueSetter&) = default;
    ValueSetter& operator=(const ValueSetter&) = default;

  private:
    struct OwnRow {
        std::string nodeName;
        std::vector<Parameter> params;
    };

    /** Null for a setter with its own row. */
    const SetterRow* mRow = nullptr;
    std::shared_ptr<const OwnRow> mOwnRow;
};

/** Stores the element's "value" attribute: a number, or 1 for "true" and 0 for "false". */
class SimpleValueSetter : public ValueSetter {
  public:
    SimpleValueSetter(std::string nodeName, Parameter param);
    explicit SimpleValueSetter(const SetterRow& row) : ValueSetter(row) {}
    void set(ParameterValues& values, TagIterator& iterator) override;
};

/** Stores the row of numbers in the element's first attribute, whatever its name. */
class RowDataValueSetter : public ValueSetter {
  public:
    RowDataValueSetter(std::string nodeName, Parameter param);
    explicit RowDataValueSetter(const SetterRow& row) : ValueSetter(row) {}
    void set(ParameterValues& values, TagIterator& iterator) override;
};

/** As RowDataValueSetter, but an empty row is stored as a single 0. */
class DrcRowDataValueSetter : public RowDataValueSetter {
  public:
    using RowDataValueSetter::RowDataValueSetter;
    void set(ParameterValues& values, TagIterator& iterator) override;
};

/** Stores the rows of a matrix, which are the element's grandchildren, as one list. */
class MixMatrixValueSetter : public ValueSetter {
  public:
    MixMatrixValueSetter(std::string nodeName, Parameter param);
    explicit MixMatrixValueSetter(const SetterRow& row) : ValueSetter(row) {}
    void set(ParameterValues& values, TagIterator& iterator) override;
};

/** Stores the integer of every attribute of the element, in document order. */
class VirtualBassSubgainValueSetter : public ValueSetter {
  public:
    VirtualBassSubgainValueSetter(std::string nodeName, Parameter param);
    explicit VirtualBassSubgainValueSetter(const SetterRow& row) : ValueSetter(row) {}
    void set(ParameterValues& values, TagIterator& iterator) override;
};

/**
 * Base of the setters that read attributes by name, the first into the first parameter and so on. A
 * setter with fewer parameters than attributes stores only that many; parameters without an
 * attribute are not set.
 */
class NamedAttributesValueSetter : public ValueSetter {
  protected:
    /** Returns a class's attribute names: always the same list, which the first call may build. */
    using AttrNames = const std::vector<std::string>& (*)();

    NamedAttributesValueSetter(std::string nodeName, std::vector<Parameter> params,
                               AttrNames attrNames)
        : ValueSetter(std::move(nodeName), std::move(params)), mAttrNames(attrNames) {}
    NamedAttributesValueSetter(const SetterRow& row, AttrNames attrNames)
        : ValueSetter(row), mAttrNames(attrNames) {}

    const std::vector<std::string>& attrNames() const { return mAttrNames(); }

    /** Stores each attribute's column in the parameter at the same index, if there is one. */
    void setAll(ParameterValues& values, std::vector<std::vector<int>> columns) const;

  private:
    AttrNames mAttrNames;
};

/** Stores the two ends of a frequency range, each an attribute; nothing for a non-element. */
class VirtualBassValueSetter : public NamedAttributesValueSetter {
  public:
    static constexpr std::array<const char*, 2> kAttrNames = {"frequency_low", "frequency_high"};

    VirtualBassValueSetter(std::string nodeName, std::vector<Parameter> params);
    explicit VirtualBassValueSetter(const SetterRow& row);
    void set(ParameterValues& values, TagIterator& iterator) override;
};

/**
 * Base of the setters of a preset's bands, which are three levels below the element.
 *
 * Each column is read as one row of its bands' texts, with a comma after each text. What ends a row
 * (string2IntVector()) ends the column, such as a missing text. Columns may thus differ in length.
 */
class PresetBandsValueSetter : public NamedAttributesValueSetter {
  public:
    void set(ParameterValues& values, TagIterator& iterator) override;

    /** The name that every band must have; null if any name will do. */
    const char* getBandName() const { return mBandName; }

  protected:
    /** @param bandName a constant; see getBandName() */
    PresetBandsValueSetter(std::string nodeName, std::vector<Parameter> params, AttrNames attrNames,
                           const char* bandName)
        : NamedAttributesValueSetter(std::move(nodeName), std::move(params), attrNames),
          mBandName(bandName) {}
    PresetBandsValueSetter(const SetterRow& row, AttrNames attrNames, const char* bandName)
        : NamedAttributesValueSetter(row, attrNames), mBandName(bandName) {}

  private:
    const char* mBandName;
};

/**
 * Stores the bands of an intelligent-equalizer preset. They end at the first element that is not
 * named "band_ieq", with the message "No attribute band_ieq was found!" (info, tag "ValueSetter").
 */
class IeqValueSetter : public PresetBandsValueSetter {
  public:
    static constexpr std::array<const char*, 2> kAttrNames = {"frequency", "target"};

    IeqValueSetter(std::string nodeName, std::vector<Parameter> params);
    explicit IeqValueSetter(const SetterRow& row);
};

/** Stores the bands of a graphic-equalizer preset, whatever their name. */
class GeqValueSetter : public PresetBandsValueSetter {
  public:
    static constexpr std::array<const char*, 2> kAttrNames = {"frequency", "gain"};

    GeqValueSetter(std::string nodeName, std::vector<Parameter> params);
    explicit GeqValueSetter(const SetterRow& row);
};

/** Base of the setters of bands that are the element's children, stored column by column. */
class BandColumnsValueSetter : public NamedAttributesValueSetter {
  public:
    void set(ParameterValues& values, TagIterator& iterator) override;

  protected:
    using NamedAttributesValueSetter::NamedAttributesValueSetter;

    /** Converts an attribute's text to the number stored in its column. */
    virtual int readColumn(size_t column, std::string_view text) const;
};

/** Stores the bands of the audio optimizer. */
class AudioOptimizerValueSetter : public BandColumnsValueSetter {
  public:
    static constexpr std::array<const char*, 5> kAttrNames = {
            "frequency", "gain_left", "gain_right", "gain_left_surround", "gain_right_surround"};

    AudioOptimizerValueSetter(std::string nodeName, std::vector<Parameter> params);
    explicit AudioOptimizerValueSetter(const SetterRow& row);
};

/** Stores the bands of the regulator. The last column is 1 for exactly "true", else 0. */
class RegulatorTuningValueSetter : public BandColumnsValueSetter {
  public:
    static constexpr std::array<const char*, 4> kAttrNames = {"frequency", "threshold_low",
                                                              "threshold_high", "isolated_band"};

    RegulatorTuningValueSetter(std::string nodeName, std::vector<Parameter> params);
    explicit RegulatorTuningValueSetter(const SetterRow& row);

  protected:
    int readColumn(size_t column, std::string_view text) const override;
};

/**
 * The registry of setters by element name. A view of the library's constant table, without state:
 * it may be used on several threads at once.
 */
class SetterCollection {
  public:
    /** The process's setters. Their addresses are in table order. */
    static const std::set<ValueSetter*>& kAllValueSetters;

    /** The setter of an element name; null if there is none. */
    ValueSetter* getValueSetter(std::string_view name) const;
};

/** Reading functions shared by setters and the document parser. The cursor ends where it was. */
class NodeParseUtils {
  public:
    /** The "value" attribute: 1 for "true", 0 for "false", else a number; 0 for a non-element. */
    static int parseValue(TagIterator& iterator);

    /** The row of numbers in the first attribute, whatever its name; empty without attributes. */
    static std::vector<int> parseDataRow(TagIterator& iterator);

    /** The rows on the children of the first child element, as one list. */
    static std::vector<int> parseMixMatrix(TagIterator& iterator);
};

}  // namespace ormel
