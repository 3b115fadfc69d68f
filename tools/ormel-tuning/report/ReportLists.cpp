#include "ReportLists.h"

#include <ormel/KivParameter.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "document/AppliedLists.h"
#include "document/EntryOrigins.h"
#include "document/ReadTrace.h"
#include "show/EffectValues.h"
#include "text/Names.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

/** Rows up to this length stand as they are. */
constexpr size_t kMaxShort = 8;
/** Codes that one sentence names. */
constexpr size_t kMaxCodes = 8;

/** What a tuning sends only where its flag is set, or for 2 and 4 channels. */
constexpr KivParameter kSwitched[] = {CEQT, RSSA, BMDT, AOBS};

/**
 * {fields: [{name, now, was}], bands: {names, rows: [{band, cells}]}, restName, items}. A number
 * has "was" where the old shape, which has the same parts, has another one in its place.
 *
 * @param changed gets the count of those
 */
Json partsJson(const Shape& now, const Shape& old, size_t& changed) {
    const auto cell = [&changed](int32_t number, int32_t was) {
        changed += number == was ? 0 : 1;
        return Json{{"now", number}, {"was", number == was ? Json() : Json(was)}};
    };
    Json parts = {{"restName", now.rest.empty() ? "" : now.restName}};
    for (size_t i = 0; i < now.fields.size(); ++i) {
        const auto& [name, number] = now.fields[i];
        parts["fields"].push_back(cell(number, old.fields[i].second));
        parts["fields"][i]["name"] = name;
    }
    for (size_t i = 0; i < now.columns.size(); ++i) {
        const Shape::Column& column = now.columns[i];
        parts["bands"]["names"].push_back(column.name);
        Json& rows = parts["bands"]["rows"];
        for (size_t band = 0; band < column.values.size(); ++band) {
            rows[band]["band"] = band + 1;
            rows[band]["cells"].push_back(cell(column.values[band], old.columns[i].values[band]));
        }
    }
    for (size_t i = 0; i < now.rest.size(); ++i) {
        parts["items"].push_back(cell(now.rest[i], old.rest[i]));
    }
    return parts;
}

bool isShort(const EffectValue& value) {
    return !value.values.has_value() ||
           (value.values->size() <= kMaxShort && !hasParts(value.shape));
}

std::string shortText(const EffectValue& value) {
    if (!value.values.has_value()) {
        return "absent";
    }
    const bool isListed = isShort(value) && !value.values->empty();
    return isListed ? listText(*value.values) : countText(value.values->size(), "value", "values");
}

/** Parameters that come from one place share it: [{line, origin, params}]. */
Json originsJson(const Origins& origins) {
    std::map<std::pair<long, std::string>, std::vector<std::string>> paramsOfPlace;
    for (const Origin& origin : origins) {
        const bool hasLine = origin.kind == Origin::Kind::LINE && origin.line != 0;
        paramsOfPlace[{origin.line, hasLine ? "" : nameOf(origin.kind)}].emplace_back(
                parameterName(origin.param));
    }
    Json list = Json::array();
    for (const auto& [place, params] : paramsOfPlace) {
        const auto& [line, word] = place;
        list.push_back({{"line", line == 0 ? Json() : Json(line)},
                        {"origin", word},
                        {"params", joined(params, ", ")}});
    }
    return list;
}

/** {code, meaning, now, was, isChanged, reason, from, parts, oldValues} */
Json rowJson(const EffectValue& now, const EffectValue& was) {
    const auto [letters, meaning] = codeText(now.code);
    Json row = {{"code", letters},
                {"meaning", meaning},
                {"now", shortText(now)},
                {"was", shortText(was)},
                {"isChanged", now.values != was.values},
                {"reason", now.notSent.empty() ? Json() : Json(now.notSent)},
                {"from", originsJson(now.origins)}};
    if (isShort(now)) {
        return row;
    }
    const bool areAlike = was.values.has_value() && haveSameParts(now.shape, was.shape) &&
                          now.shape.rest.size() == was.shape.rest.size();
    size_t changed = 0;
    row["parts"] = partsJson(now.shape, areAlike ? was.shape : now.shape, changed);
    if (changed > 0) {
        row["now"] = shortText(now) + ", " + std::to_string(changed) + " changed";
    } else if (was.values.has_value() && was.values != now.values) {
        row["parts"]["oldValues"] = listText(*was.values);
    }
    return row;
}

/** The value for a device and a code; one that the effect does not get, if there is none yet. */
EffectValue& valueAt(int32_t device, int32_t code, std::vector<EffectValue>& values) {
    const auto found = std::find_if(values.begin(), values.end(), [&](const EffectValue& value) {
        return value.device == device && value.code == code;
    });
    return found == values.end() ? values.emplace_back(EffectValue{device, code}) : *found;
}

/** Adds what a tuning gives and a flag or the number of channels keeps from the effect. */
void addSwitchedOff(const LoadedDocument& document, const EntryOrigins& origins,
                    const AppliedList& applied, std::vector<EffectValue>& values) {
    const std::vector<Entry>& entries = applied.list.entries;
    const ParameterValues* const tuning = origins.tuningOf(applied.list);
    if (tuning == nullptr || entries.empty()) {
        return;
    }
    for (const KivParameter switched : kSwitched) {
        const int32_t code = kivCode(switched);
        const EntryLayout layout = layoutOf(code);
        const Parameter param = (layout.lists.size() == 0 ? layout.channelLists : layout.lists)[0];
        const bool isSent = std::any_of(entries.begin(), entries.end(),
                                        [code](const Entry& entry) { return entry.code == code; });
        if (isSent || valuesOf(*tuning, param).empty()) {
            continue;
        }
        const bool isOff =
                layout.enable.size() != 0 && firstOr0(valuesOf(*tuning, layout.enable[0])) == 0;
        const Parameter cause = isOff ? layout.enable[0] : OUTPUT_CHANNELS;
        EffectValue& value = valueAt(entries.front().device, code, values);
        value.origins = {{Origin::Kind::LINE, param, document.trace().lineOf(*tuning, param)}};
        value.notSent = std::string(parameterName(cause)) + " is " +
                        std::to_string(firstOr0(valuesOf(*tuning, cause))) +
                        (isOff ? "" : ", and only 2 and 4 channels are sent");
    }
}

/** [{devices, isChanged, codes, rows}] of the groups, taken from there; equal ones are one. */
Json groupsJson(std::map<int32_t, Json>& groupOfDevice) {
    Json groups = Json::array();
    for (auto& [device, group] : groupOfDevice) {
        if (!groups.empty() && groups.back()["rows"] == group["rows"]) {
            groups.back()["devices"].get_ref<std::string&>() += ", " + deviceText(device);
            continue;
        }
        group["devices"] = deviceText(device);
        group["isChanged"] = group.contains("codes");
        groups.push_back(std::move(group));
    }
    return groups;
}

/** "dom, gebs for speaker; vbm for all devices": what changes. */
std::string changesText(const Json& groups) {
    std::vector<std::string> changes;
    for (const Json& group : groups) {
        std::vector<std::string> codes = group.value("codes", std::vector<std::string>());
        const bool isCut = codes.size() > kMaxCodes;
        codes.resize(std::min(codes.size(), kMaxCodes));
        if (!codes.empty()) {
            changes.push_back(joined(codes, ", ") + (isCut ? " and more for " : " for ") +
                              std::string(group["devices"]));
        }
    }
    return joined(changes, "; ");
}

/** {title, sentence, isChanged, groups} of what the effect gets; @p was is null for a new list. */
Json listJson(const EffectList& list, const std::vector<EffectValue>& values,
              const AppliedList* was, bool hasOld) {
    std::map<int32_t, Json> groupOfDevice;
    size_t changed = 0;
    for (const EffectValue& value : values) {
        const EffectValue old = hasOld ? keptValue(was, value.device, value.code) : value;
        Json& group = groupOfDevice[value.device];
        Json row = rowJson(value, old);
        if (row["isChanged"]) {
            group["codes"].push_back(row["code"]);
            ++changed;
        }
        group["rows"].push_back(std::move(row));
    }
    Json groups = groupsJson(groupOfDevice);
    const std::string count = countText(values.size(), "value", "values");
    const std::string sentence = !hasOld          ? count
                                 : was == nullptr ? "New, with " + count
                                 : changed == 0
                                         ? "Nothing changes: " + count
                                         : std::to_string(changed) + " of " + count +
                                                   (changed == 1 ? " changes: " : " change: ") +
                                                   changesText(groups);
    return {{"title", titleOf(list)},
            {"sentence", sentence + "."},
            {"isChanged", changed > 0},
            {"groups", std::move(groups)}};
}

/** Profiles are the same by number, tuning devices by name. */
const AppliedList* findSame(const std::vector<AppliedList>& lists, const EffectList& list) {
    const auto found = std::find_if(lists.begin(), lists.end(), [&list](const AppliedList& other) {
        return other.list.kind == list.kind && other.list.profile == list.profile &&
               (list.kind == EffectList::Kind::PROFILE || other.list.name == list.name);
    });
    return found == lists.end() ? nullptr : &*found;
}

}  // namespace

Json listsJson(const LoadedDocument& document, const LoadedDocument* old) {
    const bool hasOld = old != nullptr;
    const auto oldLists = hasOld ? appliedLists(*old) : std::vector<AppliedList>();
    const std::vector<AppliedList> lists = appliedLists(document);
    const EntryOrigins origins(document);
    Json json = Json::array();
    for (const AppliedList& list : lists) {
        if (json.size() == kMaxLists) {
            break;
        }
        std::vector<EffectValue> values = keptValues(list, origins);
        const AppliedList* const was = findSame(oldLists, list.list);
        for (const auto& [place, old] : was == nullptr ? RecordingEffect::Values() : was->values) {
            valueAt(place.first, place.second, values);
        }
        addSwitchedOff(document, origins, list, values);
        json.push_back(listJson(list.list, values, was, hasOld));
    }
    for (const AppliedList& list : oldLists) {
        if (findSame(lists, list.list) == nullptr && json.size() < kMaxLists) {
            const std::string count = countText(list.values.size(), "value", "values");
            json.push_back({{"title", titleOf(list.list)},
                            {"sentence", "Gone; the old document has " + count + "."},
                            {"isChanged", true},
                            {"groups", Json::array()}});
        }
    }
    for (size_t i = 0; i < json.size(); ++i) {
        json[i]["id"] = "list-" + std::to_string(i + 1);
    }
    return json;
}

}  // namespace ormel::tools
