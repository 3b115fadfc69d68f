#define LOG_TAG "ValueSetter"

#include <ormel/ValueSetter.h>

#include <log/log.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "tuning/IntegerText.h"

namespace ormel {

namespace {

constexpr std::string_view kTrue = "true";
/** Bands that a column gets room for at once: as many as documents usually have. */
constexpr size_t kUsualBandCount = 20;

/** Remembers an iterator's position and returns to it at the end of the scope. */
class ScopedPosition {
  public:
    explicit ScopedPosition(TagIterator& iterator) : mIterator(iterator) { mIterator.pushNode(); }
    ScopedPosition(const ScopedPosition&) = delete;
    ScopedPosition& operator=(const ScopedPosition&) = delete;
    ~ScopedPosition() { mIterator.popNode(); }

  private:
    TagIterator& mIterator;
};

/** The texts of the attributes of these names, one each; none at a node that is no element. */
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

/** Appends the row of integers in the first attribute, whatever its name. */
void appendRow(TagIterator& iterator, std::vector<int>& row) {
    std::vector<std::string>& texts = iterator.getTextBuffer();
    texts.clear();
    iterator.parseNodeAll(texts);
    if (!texts.empty()) {
        string2IntVector(texts.front(), row);
    }
}

template <typename Names>
std::vector<std::string> toStrings(const Names& names) {
    return {names.begin(), names.end()};
}

std::vector<std::vector<int>> makeColumns(size_t count) {
    std::vector<std::vector<int>> columns(count);
    for (std::vector<int>& column : columns) {
        column.reserve(kUsualBandCount);
    }
    return columns;
}

void setAll(ParameterValues& values, const std::vector<Parameter>& params,
            std::vector<std::vector<int>> columns) {
    for (size_t i = 0; i < std::min(params.size(), columns.size()); ++i) {
        values.set(params[i], std::move(columns[i]));
    }
}

}  // namespace

int NodeParseUtils::parseValue(TagIterator& iterator) {
    static const auto& kNames = *new std::vector<std::string>{"value"};
    const std::vector<std::string>& texts = readTexts(iterator, kNames);
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
    : mNodeName(std::move(nodeName)), mParams(std::move(params)) {}

SimpleValueSetter::SimpleValueSetter(std::string nodeName, Parameter param)
    : ValueSetter(std::move(nodeName), {param}) {}

void SimpleValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    values.set(mParams.front(), {NodeParseUtils::parseValue(iterator)});
}

RowDataValueSetter::RowDataValueSetter(std::string nodeName, Parameter param)
    : ValueSetter(std::move(nodeName), {param}) {}

void RowDataValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    values.set(mParams.front(), NodeParseUtils::parseDataRow(iterator));
}

void DrcRowDataValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<int> row = NodeParseUtils::parseDataRow(iterator);
    if (row.empty()) {
        row.push_back(0);
    }
    values.set(mParams.front(), std::move(row));
}

MixMatrixValueSetter::MixMatrixValueSetter(std::string nodeName, Parameter param)
    : ValueSetter(std::move(nodeName), {param}) {}

void MixMatrixValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    values.set(mParams.front(), NodeParseUtils::parseMixMatrix(iterator));
}

VirtualBassSubgainValueSetter::VirtualBassSubgainValueSetter(std::string nodeName, Parameter param)
    : ValueSetter(std::move(nodeName), {param}) {}

void VirtualBassSubgainValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<int> gains;
    iterator.parseNodeIntVector(gains);
    values.set(mParams.front(), std::move(gains));
}

NamedAttributesValueSetter::NamedAttributesValueSetter(std::string nodeName,
                                                       std::vector<Parameter> params,
                                                       std::vector<std::string> attrNames)
    : ValueSetter(std::move(nodeName), std::move(params)), mAttrNames(std::move(attrNames)) {}

VirtualBassValueSetter::VirtualBassValueSetter(std::string nodeName, std::vector<Parameter> params)
    : NamedAttributesValueSetter(std::move(nodeName), std::move(params), toStrings(kAttrNames)) {}

void VirtualBassValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    const std::vector<std::string>& texts = readTexts(iterator, mAttrNames);
    for (size_t i = 0; i < std::min(mParams.size(), texts.size()); ++i) {
        values.set(mParams[i], {string2Int(texts[i])});
    }
}

PresetBandsValueSetter::PresetBandsValueSetter(std::string nodeName, std::vector<Parameter> params,
                                               std::vector<std::string> attrNames,
                                               std::string bandName)
    : NamedAttributesValueSetter(std::move(nodeName), std::move(params), std::move(attrNames)),
      mBandName(std::move(bandName)) {}

void PresetBandsValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<std::vector<int>> columns = makeColumns(mAttrNames.size());
    // A column is one row of text with a comma behind every band's: it ends where such a row does.
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
            if (!mBandName.empty() && iterator.getNodeName() != mBandName) {
                ALOGI("No attribute %s was found!", mBandName.c_str());
                break;
            }
            const std::vector<std::string>& texts = readTexts(iterator, mAttrNames);
            for (size_t i = 0; i < texts.size(); ++i) {
                isOpen[i] = isOpen[i] && appendIntegers(texts[i], columns[i]);
            }
        }
    }
    setAll(values, mParams, std::move(columns));
}

IeqValueSetter::IeqValueSetter(std::string nodeName, std::vector<Parameter> params)
    : PresetBandsValueSetter(std::move(nodeName), std::move(params), toStrings(kAttrNames),
                             "band_ieq") {}

GeqValueSetter::GeqValueSetter(std::string nodeName, std::vector<Parameter> params)
    : PresetBandsValueSetter(std::move(nodeName), std::move(params), toStrings(kAttrNames), "") {}

void BandColumnsValueSetter::set(ParameterValues& values, TagIterator& iterator) {
    std::vector<std::vector<int>> columns = makeColumns(mAttrNames.size());
    {
        const ScopedPosition position(iterator);
        iterator.childrenNext();
        for (; iterator.isCurValid(); iterator.next()) {
            const std::vector<std::string>& texts = readTexts(iterator, mAttrNames);
            for (size_t i = 0; i < texts.size(); ++i) {
                columns[i].push_back(readColumn(i, texts[i]));
            }
        }
    }
    setAll(values, mParams, std::move(columns));
}

int BandColumnsValueSetter::readColumn(size_t /* column */, std::string_view text) const {
    return string2Int(text);
}

AudioOptimizerValueSetter::AudioOptimizerValueSetter(std::string nodeName,
                                                     std::vector<Parameter> params)
    : BandColumnsValueSetter(std::move(nodeName), std::move(params), toStrings(kAttrNames)) {}

RegulatorTuningValueSetter::RegulatorTuningValueSetter(std::string nodeName,
                                                       std::vector<Parameter> params)
    : BandColumnsValueSetter(std::move(nodeName), std::move(params), toStrings(kAttrNames)) {}

int RegulatorTuningValueSetter::readColumn(size_t column, std::string_view text) const {
    const bool isFlag = column + 1 == kAttrNames.size();
    return isFlag ? static_cast<int>(text == kTrue) : string2Int(text);
}

}  // namespace ormel
