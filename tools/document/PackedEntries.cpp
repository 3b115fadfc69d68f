#include "PackedEntries.h"

#include <ormel/KivParameter.h>
#include <ormel/SpatializerParamParser.h>
#include <ormel/Translator.h>

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace ormel::tools {

namespace {

constexpr char kChannels[] = "channels";

/** Hands an entry's values out one after another. */
class ValueReader {
  public:
    explicit ValueReader(const std::vector<int32_t>& values)
        : mNext(values.begin()), mEnd(values.end()) {}

    size_t left() const { return static_cast<size_t>(mEnd - mNext); }

    int32_t takeOne() { return *mNext++; }

    std::vector<int32_t> take(size_t count) {
        const auto begin = mNext;
        mNext += static_cast<ptrdiff_t>(count);
        return {begin, mNext};
    }

  private:
    std::vector<int32_t>::const_iterator mNext;
    std::vector<int32_t>::const_iterator mEnd;
};

/** How much of the names all columns have in common, in whole words. */
size_t commonPrefix(const std::vector<Parameter>& params) {
    const std::string_view first = kParameterNames[params.front()];
    size_t length = first.size();
    for (const Parameter param : params) {
        const std::string_view name = kParameterNames[param];
        const auto end = std::mismatch(first.begin(), first.end(), name.begin(), name.end()).first;
        length = std::min(length, static_cast<size_t>(end - first.begin()));
    }
    return first.rfind('_', length - 1) + 1;
}

std::optional<Shape> readBands(const EntryLayout& layout, const Entry& entry) {
    const bool hasChannels = layout.head != EntryHead::BANDS;
    const auto channels = channelsOf(entry, layout);
    if (entry.values.empty() || hasChannels != channels.has_value()) {
        return std::nullopt;
    }
    ValueReader reader(entry.values);
    const int32_t first = reader.takeOne();
    const int32_t second = hasChannels ? reader.takeOne() : 0;
    const int32_t bands = layout.head == EntryHead::CHANNELS_BANDS ? second : first;
    std::vector<Parameter> params = layout.lists.toVector();
    const std::vector<Parameter> channelLists = layout.channelLists.toVector();
    params.insert(params.end(), channelLists.begin(), channelLists.end());
    const size_t prefix = commonPrefix(params);
    params.resize(layout.lists.size() + static_cast<size_t>(channels.value_or(0)));
    if (bands < 0 || reader.left() != params.size() * static_cast<size_t>(bands)) {
        return std::nullopt;
    }
    Shape shape;
    if (hasChannels) {
        shape.fields.emplace_back(kChannels, *channels);
    }
    for (const Parameter param : params) {
        shape.columns.push_back(
                {kParameterNames[param] + prefix, param, reader.take(static_cast<size_t>(bands))});
    }
    return shape;
}

std::optional<Shape> readOutputMode(const std::vector<int32_t>& values) {
    ValueReader reader(values);
    if (reader.left() < 3) {
        return std::nullopt;
    }
    Shape shape;
    for (const char* const name :
         {kParameterNames[VIRTUALIZER_ENABLE], "endpoint", kParameterNames[ORIENTATION]}) {
        shape.fields.emplace_back(name, reader.takeOne());
    }
    shape.rest = reader.take(reader.left());
    shape.restName = kParameterNames[OUTPUT_MIX_MATRIX];
    return shape;
}

std::optional<Shape> readStress(const std::vector<int32_t>& values) {
    if (values.empty()) {
        return std::nullopt;
    }
    ValueReader reader(values);
    Shape shape;
    shape.fields.emplace_back(kChannels, reader.takeOne());
    shape.rest = reader.take(reader.left());
    shape.restName = "amounts";
    return shape;
}

}  // namespace

std::vector<Entry> entriesOf(const std::vector<int32_t>& list) {
    std::vector<Entry> entries;
    // The reader only reads; its interface predates const.
    SpatializerParamParser parser(const_cast<int32_t*>(list.data()),
                                  static_cast<int>(list.size() * sizeof(int32_t)));
    if (!parser.begin()) {
        return entries;
    }
    while (parser.next()) {
        entries.push_back({parser.mDeviceId,
                           parser.mParamCode,
                           {parser.mValues, parser.mValues + std::max(parser.mValueCount, 0)}});
    }
    return entries;
}

EntryLayout layoutOf(int32_t code) {
    const auto* const begin = std::begin(kKivParameterCodes);
    const auto* const found = std::find(begin, std::end(kKivParameterCodes), code);
    return ParameterTranslator::sTranslatorCollection->getLayout(
            found == std::end(kKivParameterCodes) ? VOL : KivParameter(found - begin));
}

std::optional<int32_t> channelsOf(const Entry& entry, const EntryLayout& layout) {
    const size_t place = layout.head == EntryHead::BANDS_CHANNELS ? 1 : 0;
    const bool hasChannels = layout.head != EntryHead::NONE && layout.head != EntryHead::BANDS;
    if (!hasChannels || entry.values.size() <= (layout.head == EntryHead::CHANNELS ? 0 : 1)) {
        return std::nullopt;
    }
    const int32_t channels = entry.values[place];
    const auto most = static_cast<int32_t>(layout.channelLists.size());
    return layout.head == EntryHead::CHANNELS ? std::optional<int32_t>(0)
           : channels < 0 || channels > most  ? std::nullopt
                                              : std::optional<int32_t>(channels);
}

std::optional<Shape> shapeOf(int32_t code, const std::vector<int32_t>& values) {
    const EntryLayout layout = layoutOf(code);
    switch (layout.head) {
        case EntryHead::NONE:
            return code == kivCode(DOM) ? readOutputMode(values) : std::nullopt;
        case EntryHead::CHANNELS:
            return readStress(values);
        default:
            return readBands(layout, {0, code, values});
    }
}

const Shape::Column* findColumn(const Shape& shape, Parameter param) {
    const auto found =
            std::find_if(shape.columns.begin(), shape.columns.end(),
                         [param](const Shape::Column& column) { return column.param == param; });
    return found == shape.columns.end() ? nullptr : &*found;
}

}  // namespace ormel::tools
