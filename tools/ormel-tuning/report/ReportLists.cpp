#include "ReportLists.h"

#include <ormel/KivParameter.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ReportValues.h"
#include "document/AppliedLists.h"
#include "document/EntryOrigins.h"
#include "document/ReadTrace.h"
#include "text/Names.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

using Values = std::vector<int32_t>;
/** A device and a code. */
using Place = std::pair<int32_t, int32_t>;

/** Codes that one sentence names. */
constexpr size_t kMaxCodes = 8;

/** A parameter of a tuning that is sent only where a flag of the tuning is set. */
struct Switched {
    KivParameter code;
    Parameter values;
    Parameter flag;
};

constexpr Switched kSwitched[] = {
        {CEQT, COMPLEX_EQUALIZER_TUNING_LEFT, COMPLEX_EQUALIZER_ENABLE},
        {RSSA, REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT, REGULATOR_SIBILANCE_SUPPRESS_ENABLE},
        {BMDT, BASS_MBDRC_TUNING, BASS_MBDRC_ENABLE},
        {AOBS, AUDIO_OPTIMIZER_FREQUENCY, AUDIO_OPTIMIZER_ENABLE},
};

/** What is known of an entry before it becomes a row. */
struct RowSource {
    Place place = {};
    ReportValue now = {};
    ReportValue was = {};
    Origins origins = {};
    /** Why the effect does not get it; empty when it does. */
    std::string reason = {};
};

ReportValue valueOf(const AppliedList* applied, const Place& place) {
    return applied == nullptr ? ReportValue()
                              : ReportValue{valuesOf(*applied, place.first, place.second),
                                            shapeOf(*applied, place.first, place.second)};
}

/** The tuning that a device gets, null where the document has none for it. */
const Tuning* tuningOf(const DeviceData& objects, const std::string& device) {
    const Tuning* tuning = nullptr;
    for (const DeviceTuning* const binding : objects.getDeviceTunings()) {
        if (binding->getDevice() != device) {
            continue;
        }
        const auto& tunings = objects.getTunings();
        const auto found =
                std::find_if(tunings.begin(), tunings.end(), [binding](const Tuning* candidate) {
                    return candidate->getName() == binding->getTuning();
                });
        tuning = found == tunings.end() ? tuning : *found;
    }
    return tuning;
}

/** The parts of a page on one document's lists. */
class ListWriter {
  public:
    ListWriter(const LoadedDocument& document, bool hasOld)
        : mDocument(document), mOrigins(document), mHasOld(hasOld) {}

    Json write(const AppliedList& now, const AppliedList* was) {
        Json json = {{"title", titleOf(now.list)}};
        Json groups = Json::array();
        std::vector<std::string> changes;
        size_t changed = 0;
        std::vector<RowSource> rows = rowsOf(now, was);
        std::stable_sort(rows.begin(), rows.end(), [](const RowSource& a, const RowSource& b) {
            return a.place.first < b.place.first;
        });
        for (const RowSource& row : rows) {
            addRow(row, groups);
        }
        for (Json& group : groups) {
            changed += group["changedCount"].get<size_t>();
            group["columns"] = mHasOld ? 4 : 3;
            group["isChanged"] = group["changedCount"] > 0;
        }
        mergeGroups(groups);
        for (const Json& group : groups) {
            if (!group["codes"].get<std::string>().empty()) {
                changes.push_back(group["codes"].get<std::string>() + " for " +
                                  group["devices"].get<std::string>());
            }
        }
        json["sentence"] = sentenceOf(rows.size(), changed, joined(changes, "; "), was);
        json["isChanged"] = changed > 0;
        json["groups"] = std::move(groups);
        return json;
    }

  private:
    std::vector<RowSource> rowsOf(const AppliedList& now, const AppliedList* was) {
        std::vector<RowSource> rows;
        const std::vector<Origins> origins = mOrigins.originsOf(now.list);
        std::map<Place, size_t> last;
        for (size_t i = 0; i < now.list.entries.size(); ++i) {
            const Entry& entry = now.list.entries[i];
            last[{entry.device, entry.code}] = i;
        }
        for (size_t i = 0; i < now.list.entries.size(); ++i) {
            const Entry& entry = now.list.entries[i];
            const Place place = {entry.device, entry.code};
            // Of entries for one device and code the effect keeps the last.
            if (last[place] != i) {
                continue;
            }
            RowSource& row = rows.emplace_back();
            row.place = place;
            row.now = valueOf(&now, place);
            row.was = valueOf(was, place);
            row.origins = origins[i];
            row.reason = row.now.values == nullptr ? reasonOf(entry) : "";
        }
        if (was != nullptr) {
            for (const auto& [place, values] : was->values) {
                if (last.count(place) == 0) {
                    RowSource& row = rows.emplace_back();
                    row.place = place;
                    row.was = valueOf(was, place);
                }
            }
        }
        addSwitchedOff(now.list, rows);
        return rows;
    }

    std::string reasonOf(const Entry& entry) const {
        if (entry.code == kivCode(GEBS) && entry.values.size() / 2 != kGeqBands) {
            return "a graphic equalizer has 20 bands, this one " +
                   std::to_string(entry.values.size() / 2);
        }
        return entry.code == kivCode(VBON) ? "the document has no tuning" : "the front keeps it";
    }

    /** What a tuning gives and a flag or the number of channels keeps from the effect. */
    void addSwitchedOff(const EffectList& list, std::vector<RowSource>& rows) const {
        const Tuning* const tuning = list.kind == EffectList::Kind::TUNING
                                             ? tuningOf(mDocument.objects(), list.name)
                                             : nullptr;
        if (tuning == nullptr || list.entries.empty()) {
            return;
        }
        const auto valuesOf = [tuning](Parameter param) {
            const auto found = tuning->getValues().find(param);
            return found == tuning->getValues().end() ? Values() : found->second;
        };
        for (const Switched& row : kSwitched) {
            const Place place = {list.entries.front().device, kivCode(row.code)};
            const bool isSent = std::any_of(
                    list.entries.begin(), list.entries.end(),
                    [&place](const Entry& entry) { return entry.code == place.second; });
            if (isSent || valuesOf(row.values).empty()) {
                continue;
            }
            const bool isOff = row.code != AOBS && firstOr0(valuesOf(row.flag)) == 0;
            const Parameter cause = isOff ? row.flag : OUTPUT_CHANNELS;
            const long line = mDocument.trace().lineOf(*tuning, row.values);
            const std::string reason = std::string(kParameterNames[cause]) + " is " +
                                       std::to_string(firstOr0(valuesOf(cause))) +
                                       (isOff ? "" : ", and only 2 and 4 channels are sent");
            const auto known = std::find_if(
                    rows.begin(), rows.end(),
                    [&place](const RowSource& candidate) { return candidate.place == place; });
            RowSource& target = known == rows.end() ? rows.emplace_back() : *known;
            target.place = place;
            target.origins = {{Origin::Kind::LINE, row.values, line}};
            target.reason = reason;
        }
    }

    /** Parameters that come from one place share it. */
    static Json originsJson(const Origins& origins) {
        std::map<std::pair<long, std::string>, std::string> paramsOfPlace;
        for (const Origin& origin : origins) {
            const bool hasLine = origin.kind == Origin::Kind::LINE && origin.line != 0;
            std::string& params =
                    paramsOfPlace[{hasLine ? origin.line : 0, hasLine ? "" : nameOf(origin.kind)}];
            params.append(params.empty() ? "" : ", ").append(kParameterNames[origin.param]);
        }
        Json list = Json::array();
        for (const auto& [place, params] : paramsOfPlace) {
            const auto& [line, word] = place;
            list.push_back({{"params", params},
                            {"line", line == 0 ? Json(false) : Json(line)},
                            {"origin", word}});
        }
        return list;
    }

    void addRow(const RowSource& source, Json& groups) {
        const std::string device = deviceText(source.place.first);
        if (groups.empty() || groups.back()["devices"] != device) {
            groups.push_back({{"devices", device},
                              {"codes", ""},
                              {"changedCount", 0},
                              {"hasOld", mHasOld},
                              {"rows", Json::array()}});
        }
        Json& group = groups.back();
        const auto [letters, meaning] = codeText(source.place.second);
        const Values* const now = source.now.values;
        const Values* const was = source.was.values;
        const bool isSame =
                (now == nullptr) == (was == nullptr) && (now == nullptr || *now == *was);
        const bool isChanged = mHasOld && !isSame;
        Json row = valuesJson(source.now, source.was);
        row["code"] = letters;
        row["meaning"] = meaning;
        row["isChanged"] = isChanged;
        row["hasOld"] = mHasOld;
        row["reason"] = source.reason.empty() ? Json(false) : Json(source.reason);
        row["from"] = originsJson(source.origins);
        group["rows"].push_back(std::move(row));
        if (isChanged) {
            const auto count = group["changedCount"].get<size_t>() + 1;
            std::string codes = group["codes"].get<std::string>();
            if (count <= kMaxCodes) {
                codes.append(codes.empty() ? "" : ", ").append(letters);
            } else if (count == kMaxCodes + 1) {
                codes += " and more";
            }
            group["codes"] = codes;
            group["changedCount"] = count;
        }
    }

    /** Devices one after another that get the same share their rows. */
    static void mergeGroups(Json& groups) {
        Json merged = Json::array();
        for (Json& group : groups) {
            if (!merged.empty() && merged.back()["rows"] == group["rows"]) {
                merged.back()["devices"] = merged.back()["devices"].get<std::string>() + ", " +
                                           group["devices"].get<std::string>();
            } else {
                merged.push_back(std::move(group));
            }
        }
        groups = std::move(merged);
    }

    std::string sentenceOf(size_t count, size_t changed, const std::string& changes,
                           const AppliedList* was) const {
        const std::string values = countText(count, "value", "values");
        if (!mHasOld) {
            return values + ".";
        }
        if (was == nullptr) {
            return "New, with " + values + ".";
        }
        return changed == 0 ? "Nothing changes: " + values + "."
                            : std::to_string(changed) + " of " + values +
                                      (changed == 1 ? " changes: " : " change: ") + changes + ".";
    }

    const LoadedDocument& mDocument;
    const EntryOrigins mOrigins;
    const bool mHasOld;
};

/** Profiles are the same by number, tuning devices by name. */
bool isSameList(const EffectList& left, const EffectList& right) {
    const bool isProfile = left.kind == EffectList::Kind::PROFILE;
    return left.kind == right.kind &&
           (isProfile ? left.profile == right.profile : left.name == right.name);
}

const AppliedList* findSame(const std::vector<AppliedList>& lists, const EffectList& list) {
    const auto found = std::find_if(lists.begin(), lists.end(), [&list](const AppliedList& other) {
        return isSameList(other.list, list);
    });
    return found == lists.end() ? nullptr : &*found;
}

}  // namespace

Json listsJson(const LoadedDocument& document, const LoadedDocument* old) {
    const std::vector<AppliedList> oldLists =
            old == nullptr ? std::vector<AppliedList>() : appliedLists(*old);
    const std::vector<AppliedList> lists = appliedLists(document);
    ListWriter writer(document, old != nullptr);
    Json json = Json::array();
    for (const AppliedList& list : lists) {
        if (json.size() == kMaxLists) {
            break;
        }
        json.push_back(writer.write(list, findSame(oldLists, list.list)));
    }
    for (const AppliedList& list : oldLists) {
        if (findSame(lists, list.list) == nullptr && json.size() < kMaxLists) {
            json.push_back(
                    {{"title", titleOf(list.list)},
                     {"sentence", "Gone; the old document has " +
                                          countText(list.values.size(), "value", "values") + "."},
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
