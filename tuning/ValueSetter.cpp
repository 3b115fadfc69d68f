#define LOG_TAG "ValueSetter"

#include <ormel/ValueSetter.h>

#include <log/log.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "model/NeverDestroyed.h"
#include "tuning/IntegerText.h"
#include "tuning/SetterRow.h"

namespace ormel {

namespace {

constexpr std::string_view kTrue = "true";
constexpr char kIeqBandName[] = "band_ieq";
/** The usual number of bands, reserved for each column: one allocation instead of several. */
constexpr size_t kUsualBandCount = 20;

/** Saves an iterator's position and returns to it at the end of the scope. */
class ScopedPosition {
  public:
    explicit ScopedPosition(TagIterator& iterator) : mIterator(iterator) { mIterator.pushNode(); }
    ScopedPosition(const ScopedPosition&) = delete;
    ScopedPosition& operator=(const ScopedPosition&) = delete;
    ~ScopedPosition() { mIterator.popNode(); }

  private:
    TagIterator& mIterator;
};

/** The texts of the named attributes, one per name; empty if the node is not an element. */
const std::vector<std::string>& readTexts(TagIterator& iterator,
                                          const std::vector<std::string>& names) {
    std::vector<std::string>& texts = iterator.getTextBuffer();
    texts.clear();
    iterator.parseNodeWithName(names, texts);
    if (!texts.empty()) {
        texts.resize(names.size());
    }
    return texts;
}

/** Appends the integers of the first attribute, whatever its name. */
void appendRow(TagIterator& iterator, std::vector<int>& row) {
    std::vector<std::string>& texts = iterator.getTextBuffer();
    texts.clear();
    iterator.parseNodeAll(texts);
    if (!texts.empty()) {
        string2IntVector(texts.front(), row);
    }
}

/** A class's attribute names, as iterators take them. */
template <typename Setter>
const std::vector<std::string>& attrNamesOf() {
    static NeverDestroyed<std::vector<std::string>> names(Setter::kAttrNames.begin(),
                                                          Setter::kAttrNames.end());
    return *names;
}

std::vector<std::vector<int>> makeColumns(size_t count) {
    std::vector<std::vector<int>> columns(count);
    for (std::vector<int>& column : columns) {
        column.reserve(kUsualBandCount);
    }
    return columns;
}

}  // namespace

int NodeParseUtils::parseValue(TagIterator& iterator) {
    static NeverDestroyed<std::vector<std::string>> names(size_t{1}, "value");
    const std::vector<std::string>& texts = readTexts(iterator, *names);
    if (texts.empty()) {
        return 0;
    }
    return texts.front() == kTrue ? 1 : string2Int(texts.front());
}

std::vector<int> NodeParseUtils::parseDataRow(TagIterator& iterator) {
    std::vector<int> row;
    appendRow(iterator, row);
    return row;
}

std::vector<int> NodeParseUtils::parseMixMatrix(TagIterator& iterator) {
    std::vector<int> matrix;
    const ScopedPosition position(iterator);
    iterator.childrenNext();
    if (!iterator.isChildrenValid()) {
        return matrix;
    }
    iterator.childrenNext();
    for (; iterator.isCurValid(); iterator.next()) {
        appendRow(iterator, matrix);
    }
    return matrix;
}

ValueSetter::ValueSetter(std::string nodeName, std::vector<Parameter> params)
    : mOwnRow(new OwnRow{std::move(nodeName), std::move(params)}) {}

std::string ValueSetter::getNodeName() {
    return mRow != nullptr ? std::string(mRow->nodeName()) : mOwnRow->nodeName;
}

size_t ValueSetter::getParamCount() const {
    return mRow != nullptr ? mRow->params.size() : mOwnRow->params.size();
}

Parameter ValueSetter::getParam(size_t i) const {
    return mRow != nullptr ? mRow->params[i] : mOwnRow->params[i];
}

std::vector<Parameter> ValueSetter::getParams() const {
    return mRow != nullptr ? mRow->params.toVector() : mOwnRow->params;
}

SimpleValueSetter::SimpleValueSetter(std::string nodeName, Parameter param)
    : ValueSetter(std::move(nodeName), {param}) {}

void SimpleValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    values.set(getParam(0), {NodeParseUtils::parseValue(iterator)});
}

RowDataValueSetter::RowDataValueSetter(std::string nodeName, Parameter param)
    : ValueSetter(std::move(nodeName), {param}) {}

void RowDataValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    values.set(getParam(0), NodeParseUtils::parseDataRow(iterator));
}

void DrcRowDataValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<int> row = NodeParseUtils::parseDataRow(iterator);
    if (row.empty()) {
        row.push_back(0);
    }
    values.set(getParam(0), std::move(row));
}

MixMatrixValueSetter::MixMatrixValueSetter(std::string nodeName, Parameter param)
    : ValueSetter(std::move(nodeName), {param}) {}

void MixMatrixValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    values.set(getParam(0), NodeParseUtils::parseMixMatrix(iterator));
}

VirtualBassSubgainValueSetter::VirtualBassSubgainValueSetter(std::string nodeName, Parameter param)
    : ValueSetter(std::move(nodeName), {param}) {}

void VirtualBassSubgainValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<int> gains;
    iterator.parseNodeIntVector(gains);
    values.set(getParam(0), std::move(gains));
}

void NamedAttributesValueSetter::setAll(ParameterValues& values,
                                        std::vector<std::vector<int>> columns) const {
    for (size_t i = 0; i < std::min(getParamCount(), columns.size()); ++i) {
        values.set(getParam(i), std::move(columns[i]));
    }
}

VirtualBassValueSetter::VirtualBassValueSetter(std::string nodeName, std::vector<Parameter> params)
    : NamedAttributesValueSetter(std::move(nodeName), std::move(params),
                                 &attrNamesOf<VirtualBassValueSetter>) {}

VirtualBassValueSetter::VirtualBassValueSetter(const SetterRow& row)
    : NamedAttributesValueSetter(row, &attrNamesOf<VirtualBassValueSetter>) {}

void VirtualBassValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    const std::vector<std::string>& texts = readTexts(iterator, attrNames());
    for (size_t i = 0; i < std::min(getParamCount(), texts.size()); ++i) {
        values.set(getParam(i), {string2Int(texts[i])});
    }
}

void PresetBandsValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<std::vector<int>> columns = makeColumns(attrNames().size());
    // A column reads like one row of all its bands' texts, each followed by a comma, and ends where
    // that row would.
    std::vector<bool> isOpen(columns.size(), true);
    {
        const ScopedPosition position(iterator);
        iterator.childrenNext();
        iterator.childrenNext();
        iterator.childrenNext();
        for (; iterator.isCurValid(); iterator.next()) {
            if (!iterator.isElementNode()) {
                continue;
            }
            if (mBandName != nullptr && iterator.getNodeName() != mBandName) {
                ALOGI("No attribute %s was found!", mBandName);
                break;
            }
            const std::vector<std::string>& texts = readTexts(iterator, attrNames());
            for (size_t i = 0; i < texts.size(); ++i) {
                isOpen[i] = isOpen[i] && appendIntegers(texts[i], columns[i]);
            }
        }
    }
    setAll(values, std::move(columns));
}

IeqValueSetter::IeqValueSetter(std::string nodeName, std::vector<Parameter> params)
    : PresetBandsValueSetter(std::move(nodeName), std::move(params), &attrNamesOf<IeqValueSetter>,
                             kIeqBandName) {}

IeqValueSetter::IeqValueSetter(const SetterRow& row)
    : PresetBandsValueSetter(row, &attrNamesOf<IeqValueSetter>, kIeqBandName) {}

GeqValueSetter::GeqValueSetter(std::string nodeName, std::vector<Parameter> params)
    : PresetBandsValueSetter(std::move(nodeName), std::move(params), &attrNamesOf<GeqValueSetter>,
                             nullptr) {}

GeqValueSetter::GeqValueSetter(const SetterRow& row)
    : PresetBandsValueSetter(row, &attrNamesOf<GeqValueSetter>, nullptr) {}

void BandColumnsValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<std::vector<int>> columns = makeColumns(attrNames().size());
    {
        const ScopedPosition position(iterator);
        iterator.childrenNext();
        for (; iterator.isCurValid(); iterator.next()) {
            const std::vector<std::string>& texts = readTexts(iterator, attrNames());
            for (size_t i = 0; i < texts.size(); ++i) {
                columns[i].push_back(readColumn(i, texts[i]));
            }
        }
    }
    setAll(values, std::move(columns));
}

int BandColumnsValueSetter::readColumn(size_t /* column */, std::string_view text) const {
    return string2Int(text);
}

AudioOptimizerValueSetter::AudioOptimizerValueSetter(std::string nodeName,
                                                     std::vector<Parameter> params)
    : BandColumnsValueSetter(std::move(nodeName), std::move(params),
                             &attrNamesOf<AudioOptimizerValueSetter>) {}

AudioOptimizerValueSetter::AudioOptimizerValueSetter(const SetterRow& row)
    : BandColumnsValueSetter(row, &attrNamesOf<AudioOptimizerValueSetter>) {}

RegulatorTuningValueSetter::RegulatorTuningValueSetter(std::string nodeName,
                                                       std::vector<Parameter> params)
    : BandColumnsValueSetter(std::move(nodeName), std::move(params),
                             &attrNamesOf<RegulatorTuningValueSetter>) {}

RegulatorTuningValueSetter::RegulatorTuningValueSetter(const SetterRow& row)
    : BandColumnsValueSetter(row, &attrNamesOf<RegulatorTuningValueSetter>) {}

int RegulatorTuningValueSetter::readColumn(size_t column, std::string_view text) const {
    const bool isFlag = column + 1 == kAttrNames.size();
    return isFlag ? static_cast<int>(text == kTrue) : string2Int(text);
}

}  // namespace ormel
