#include "PackedEntries.h"

#include <ormel/SpatializerParamParser.h>
#include <ormel/Translator.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "text/Names.h"

namespace ormel::tools {

namespace {

constexpr char kChannels[] = "channels";

/** How many lists by channel values have; none where they announce more than there can be. */
std::optional<size_t> channelsOf(const EntryLayout& layout, const std::vector<int32_t>& values) {
    const auto most = static_cast<int32_t>(layout.channelLists.size());
    if (most == 0) {
        return 0;
    }
    const size_t place = layout.head == EntryHead::BANDS_CHANNELS ? 1 : 0;
    const int32_t channels = values.size() < 2 ? -1 : values[place];
    return channels < 0 || channels > most ? std::nullopt : std::optional<size_t>(channels);
}

/** The lists of an entry with so many channels. */
std::vector<Parameter> listsOf(const EntryLayout& layout, size_t channels) {
    std::vector<Parameter> lists = layout.lists.toVector();
    for (size_t i = 0; i < channels; ++i) {
        lists.push_back(layout.channelLists[i]);
    }
    return lists;
}

/** How much of the names all columns have in common, in whole words. */
size_t commonPrefix(const std::vector<Parameter>& params) {
    std::set<std::string_view> names;
    for (const Parameter param : params) {
        names.insert(kParameterNames[param]);
    }
    // What the first and the last share, all share.
    const auto [first, last] = std::pair(*names.begin(), *names.rbegin());
    const auto end = std::mismatch(first.begin(), first.end(), last.begin(), last.end()).first;
    return first.rfind('_', static_cast<size_t>(end - first.begin()) - 1) + 1;
}

std::optional<Shape> bandsOf(const EntryLayout& layout, const std::vector<int32_t>& values) {
    const std::optional<size_t> channels = channelsOf(layout, values);
    if (values.empty() || !channels.has_value()) {
        return std::nullopt;
    }
    Shape shape;
    if (layout.head != EntryHead::BANDS) {
        shape.fields.emplace_back(kChannels, static_cast<int32_t>(*channels));
    }
    const int32_t bands = values[layout.head == EntryHead::CHANNELS_BANDS ? 1 : 0];
    auto next = values.begin() + (layout.head == EntryHead::BANDS ? 1 : 2);
    const std::vector<Parameter> params = listsOf(layout, *channels);
    const auto left = static_cast<size_t>(values.end() - next);
    if (bands < 0 || left != params.size() * static_cast<size_t>(bands)) {
        return std::nullopt;
    }
    const size_t prefix = commonPrefix(listsOf(layout, layout.channelLists.size()));
    for (const Parameter param : params) {
        shape.columns.push_back({kParameterNames[param] + prefix, param, {next, next + bands}});
        next += bands;
    }
    return shape;
}

}  // namespace

EntryLayout layoutOf(int32_t code) {
    return ParameterTranslator::sTranslatorCollection->getLayout(paramOf(code).value_or(VOL));
}

std::vector<Entry> entriesOf(const std::vector<int32_t>& list) {
    std::vector<Entry> entries;
    // The reader only reads; its interface predates const.
    SpatializerParamParser parser(const_cast<int32_t*>(list.data()),
                                  static_cast<int>(list.size() * sizeof(int32_t)));
    for (bool isMore = parser.begin() && parser.next(); isMore; isMore = parser.next()) {
        entries.push_back({parser.mDeviceId,
                           parser.mParamCode,
                           {parser.mValues, parser.mValues + std::max(parser.mValueCount, 0)}});
    }
    return entries;
}

const std::vector<int>& valuesOf(const ParameterValues& object, Parameter param) {
    static const std::vector<int> none;
    const auto found = object.getValues().find(param);
    return found == object.getValues().end() ? none : found->second;
}

ParameterOwner ownerOf(int32_t code) {
    const EntryLayout layout = layoutOf(code);
    const ParameterList& params = layout.enable.size() == 0 ? layout.lists : layout.enable;
    const auto owner = params.size() == 0 ? ParameterOwner::NONE : kParameterOwners[params[0]];
    // Only endpoints have a parameter that no class accepts.
    return owner == ParameterOwner::NONE ? ParameterOwner::PROFILE_ENDPOINT : owner;
}

std::set<Parameter> sourcesOf(const Entry& entry, const ParameterValues& object) {
    const EntryLayout layout = layoutOf(entry.code);
    std::set<Parameter> sources;
    if (layout.enable.size() == 0 || firstOr0(valuesOf(object, layout.enable[0])) != 0) {
        const auto lists = listsOf(layout, channelsOf(layout, entry.values).value_or(0));
        sources.insert(lists.begin(), lists.end());
    }
    if (layout.enable.size() != 0) {
        sources.insert(layout.enable[0]);
    }
    if (layout.channelLists.size() != 0 || layout.head == EntryHead::CHANNELS) {
        sources.insert(OUTPUT_CHANNELS);
    }
    if (entry.device != DEVICE_OUT_SPEAKER) {
        sources.erase(OUTPUT_MIX_MATRIX);
    }
    return sources;
}

std::optional<Shape> shapeOf(int32_t code, const std::vector<int32_t>& values) {
    const EntryLayout layout = layoutOf(code);
    if (code == kivCode(DOM)) {
        return shapeOf(
                values,
                {kParameterNames[VIRTUALIZER_ENABLE], "endpoint", kParameterNames[ORIENTATION]},
                kParameterNames[OUTPUT_MIX_MATRIX]);
    }
    if (layout.head == EntryHead::CHANNELS) {
        return shapeOf(values, {kChannels}, "amounts");
    }
    return layout.head == EntryHead::NONE ? std::nullopt : bandsOf(layout, values);
}

std::optional<Shape> shapeOf(const std::vector<int32_t>& values,
                             std::initializer_list<const char*> fields, const char* restName) {
    if (values.size() < fields.size()) {
        return std::nullopt;
    }
    Shape shape;
    for (const char* const name : fields) {
        shape.fields.emplace_back(name, values[shape.fields.size()]);
    }
    shape.rest.assign(values.begin() + static_cast<ptrdiff_t>(fields.size()), values.end());
    shape.restName = restName;
    return shape;
}

}  // namespace ormel::tools
