#include "PackedEntries.h"

#include <ormel/KivParameter.h>
#include <ormel/SpatializerParamParser.h>

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace ormel::tools {

namespace {

constexpr char kChannels[] = "channels";

/** The numbers that an entry begins with. */
enum class Head { BANDS, BANDS_CHANNELS, CHANNELS_BANDS };

/** An entry of bands, column by column. */
struct BandLayout {
    KivParameter param;
    Head head;
    std::vector<Parameter> columns;
    /** As many of these follow as there are channels. */
    std::vector<Parameter> channelColumns;
};

const std::vector<BandLayout>& bandLayouts() {
    static const auto& layouts = *new std::vector<BandLayout>{
            {IEBS, Head::BANDS, {IEQ_FREQUENCY, IEQ_TARGET}, {}},
            {GEBS, Head::BANDS, {GEQ_FREQUENCY, GEQ_GAIN}, {}},
            {ARBS,
             Head::BANDS,
             {REGULATOR_FREQUENCY, REGULATOR_THRESHOLD_LOW, REGULATOR_THRESHOLD_HIGH,
              REGULATOR_ISOLATED_BAND},
             {}},
            {AOBS,
             Head::BANDS_CHANNELS,
             {AUDIO_OPTIMIZER_FREQUENCY},
             {AUDIO_OPTIMIZER_GAIN_L, AUDIO_OPTIMIZER_GAIN_R, AUDIO_OPTIMIZER_GAIN_LS,
              AUDIO_OPTIMIZER_GAIN_RS}},
            {CEQT,
             Head::CHANNELS_BANDS,
             {},
             {COMPLEX_EQUALIZER_TUNING_LEFT, COMPLEX_EQUALIZER_TUNING_RIGHT,
              COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND, COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND}},
            {RSSA,
             Head::CHANNELS_BANDS,
             {},
             {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT, REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT,
              REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND,
              REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND}},
    };
    return layouts;
}

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

std::optional<Shape> readBands(const BandLayout& layout, const std::vector<int32_t>& values) {
    ValueReader reader(values);
    const bool hasChannels = layout.head != Head::BANDS;
    if (reader.left() < (hasChannels ? 2 : 1)) {
        return std::nullopt;
    }
    int32_t bands = reader.takeOne();
    int32_t channels = hasChannels ? reader.takeOne() : 0;
    if (layout.head == Head::CHANNELS_BANDS) {
        std::swap(bands, channels);
    }
    std::vector<Parameter> params = layout.columns;
    params.insert(params.end(), layout.channelColumns.begin(), layout.channelColumns.end());
    const size_t prefix = commonPrefix(params);
    if (bands < 0 || channels < 0 || static_cast<size_t>(channels) > layout.channelColumns.size()) {
        return std::nullopt;
    }
    params.resize(layout.columns.size() + static_cast<size_t>(channels));
    if (reader.left() != params.size() * static_cast<size_t>(bands)) {
        return std::nullopt;
    }
    Shape shape;
    if (hasChannels) {
        shape.fields.emplace_back(kChannels, channels);
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

std::optional<Shape> shapeOf(int32_t code, const std::vector<int32_t>& values) {
    if (code == kivCode(DOM)) {
        return readOutputMode(values);
    }
    if (code == kivCode(ARSA)) {
        return readStress(values);
    }
    const auto& layouts = bandLayouts();
    const auto layout = std::find_if(
            layouts.begin(), layouts.end(),
            [code](const BandLayout& candidate) { return kivCode(candidate.param) == code; });
    return layout == layouts.end() ? std::nullopt : readBands(*layout, values);
}

const Shape::Column* findColumn(const Shape& shape, Parameter param) {
    const auto found =
            std::find_if(shape.columns.begin(), shape.columns.end(),
                         [param](const Shape::Column& column) { return column.param == param; });
    return found == shape.columns.end() ? nullptr : &*found;
}

}  // namespace ormel::tools
