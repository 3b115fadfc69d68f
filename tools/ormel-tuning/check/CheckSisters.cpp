// Sections of a document against the others of their kind: what one lacks that all others have,
// rows of another length, and values that stand apart.
#include <algorithm>
#include <climits>
#include <cstdlib>
#include <map>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "CheckMeaning.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

constexpr std::string_view kGeqPreset = "preset type=\"geq\" of its id";

/** The sections that have a part, and the last element of each that gives it. */
using Part = std::map<size_t, size_t>;

/** By class of section and name: elements in it, endpoints of a profile, and kGeqPreset. */
using Parts = std::map<std::pair<ParameterOwner, std::string_view>, Part>;

Parts partsOf(const CheckContext& context) {
    const auto& sections = context.trace.getSections();
    std::set<int> geqPresets;
    for (const GeqPreset* const preset : context.data.getGeqPresets()) {
        geqPresets.insert(preset->getProfileId());
    }
    Parts parts;
    const auto add = [&](size_t section, std::string_view name, size_t element) {
        if (section != ReadElement::kNoSection && sections[section].object != nullptr) {
            parts[{sections[section].owner, name}][section] = element;
        }
    };
    for (size_t i = 0; i < sections.size(); ++i) {
        const ReadSection& section = sections[i];
        if (section.object == nullptr) {
            continue;
        }
        if (section.owner == ParameterOwner::PROFILE_ENDPOINT) {
            const auto* const endpoint = static_cast<const ProfileEndpoint*>(section.object);
            add(section.outer, endpointName(endpoint->getEndpoint()), section.element);
        } else if (section.owner == ParameterOwner::PROFILE) {
            const auto* const profile = static_cast<const Profile*>(section.object);
            if (geqPresets.count(profile->getProfileId()) != 0) {
                add(i, kGeqPreset, section.element);
            }
        }
    }
    for (size_t i = 1; i < context.document.size(); ++i) {
        const ReadElement& record = context.read(i);
        if (record.as == ReadElement::As::PARAMETER) {
            add(record.section, context.document.name(i), i);
        } else if (record.is(DocumentElement::INCLUDE)) {
            add(context.read(context.document.parent(i)).section, context.document.name(i), i);
        }
    }
    return parts;
}

const char* outcomeOfLacking(std::string_view name) {
    return name == rowOf(DocumentElement::INCLUDE).name ? "preset 0 is taken"
           : name == kGeqPreset                         ? "no gebs entry is sent"
           : contains(kEndpointNames, name)             ? "nothing is sent for that endpoint"
                                            : "what needs it goes out without values or as 0";
}

void addLacking(const CheckContext& context, const ReadSection& section,
                std::vector<std::string> names) {
    constexpr size_t kMost = 3;
    const size_t others = names.size() - std::min(names.size(), kMost);
    names.resize(names.size() - others);
    // What a tuning lacks, its data lacks.
    const size_t part = section.sources.empty() ? section.element : section.sources.back().second;
    const bool isInData = section.owner == ParameterOwner::TUNING && part != section.element;
    context.add(Rule::ABSENT, isInData ? context.document.parent(part) : section.element,
                "lacks " + joined(names, ", ") +
                        (others == 0 ? "" : " and " + std::to_string(others) + " more") +
                        ", which all others of its kind have; " + outcomeOfLacking(names.front()));
}

/** The smallest and the largest of the values but one, whatever their signs. */
std::pair<long, long> amountsBut(const std::vector<int>& values, size_t at) {
    long smallest = LONG_MAX;
    long largest = 0;
    for (size_t i = 0; i < values.size(); ++i) {
        smallest = i == at ? smallest : std::min(smallest, std::labs(values[i]));
        largest = i == at ? largest : std::max(largest, std::labs(values[i]));
    }
    return {smallest, largest};
}

/** Whether a value would lie among others that all have the other sign if it had that as well. */
bool hasTurnedSign(const std::vector<int>& values, size_t at, long least) {
    const auto isAlike = [&](int value) { return (value > 0) == (values[at] > 0); };
    const auto [smallest, largest] = amountsBut(values, at);
    const long amount = std::labs(values[at]);
    return std::count_if(values.begin(), values.end(), isAlike) == 1 &&
           std::min(amount, smallest) >= least && 3 * amount >= 2 * smallest &&
           2 * amount <= 3 * largest && largest <= 3 * smallest;
}

/** What one section has of a parameter. */
struct Row {
    size_t element;
    const std::vector<int>& values;
};

/** The numbers of rows that are equally long, each against those in its place. */
void checkPlaces(const CheckContext& context, const std::vector<Row>& rows) {
    const size_t length = rows.front().values.size();
    std::vector<int> values(rows.size());
    for (size_t place = 0; place < length; ++place) {
        std::transform(rows.begin(), rows.end(), values.begin(),
                       [place](const Row& row) { return row.values[place]; });
        const auto [least, most] = std::minmax_element(values.begin(), values.end());
        for (const auto found : {least, most}) {
            const auto i = static_cast<size_t>(found - values.begin());
            // In a row the sign alone says little, unless the neighbours have the other too.
            const bool isInner = place != 0 && place + 1 != length;
            const bool isSure = length == 1 || (isInner && isTurnedAt(rows[i].values, place));
            if (hasTurnedSign(values, i, isSure ? 20 : 100) ||
                isOutOfProportion(values, i, length == 1 ? 20 : 100)) {
                context.add(Rule::IMPLAUSIBLE, rows[i].element,
                            "has " + std::to_string(*found) + " where others have " +
                                    std::to_string(values[i == 0 ? 1 : 0]) + " or so");
                return;
            }
        }
    }
}

/** What the sections of a kind have of a parameter, each against the others. */
void checkRows(const CheckContext& context, const Part& part, Parameter param) {
    std::vector<Row> rows;
    std::map<size_t, std::vector<size_t>> elementsByLength;
    for (const auto& [section, element] : part) {
        rows.push_back({element, context.valuesOf(section, param)});
        elementsByLength[rows.back().values.size()].push_back(element);
    }
    const auto [rare, usual] = std::minmax_element(
            elementsByLength.begin(), elementsByLength.end(),
            [](const auto& a, const auto& b) { return a.second.size() < b.second.size(); });
    if (elementsByLength.size() == 1) {
        checkPlaces(context, rows);
    } else if (elementsByLength.size() == 2 && rare->second.size() == 1 &&
               param != REGULATOR_STRESS_AMOUNT) {
        context.add(Rule::ROW_LENGTH, rare->second.front(),
                    "has " + countText(rare->first, "number", "numbers") +
                            ", and all others of its name have " + std::to_string(usual->first));
    }
}

bool hasBands(const ValueSetter* setter) {
    return dynamic_cast<const BandColumnsValueSetter*>(setter) != nullptr ||
           dynamic_cast<const PresetBandsValueSetter*>(setter) != nullptr ||
           dynamic_cast<const MixMatrixValueSetter*>(setter) != nullptr;
}

}  // namespace

size_t largestOf(const std::vector<int>& values) {
    const auto isSmaller = [](long one, long other) { return std::labs(one) < std::labs(other); };
    return static_cast<size_t>(std::max_element(values.begin(), values.end(), isSmaller) -
                               values.begin());
}

bool isOutOfProportion(const std::vector<int>& values, size_t at, long least) {
    const long largest = std::max(amountsBut(values, at).second, 1L);
    return std::labs(values[at]) >= least && std::labs(values[at]) > 5 * largest;
}

bool isTurnedAt(const std::vector<int>& values, size_t at) {
    constexpr int kLeast = 20;
    const auto isOpposite = [&](size_t i) {
        return i >= values.size() ||
               (std::labs(values[i]) >= kLeast && (values[i] > 0) != (values[at] > 0));
    };
    return values.size() > 2 && std::labs(values[at]) >= kLeast && isOpposite(at - 1) &&
           isOpposite(at + 1);
}

void checkSisters(const CheckContext& context) {
    // It takes two others to call one the exception that lacks something, three of another's value.
    constexpr size_t kMinOwners = 2;
    constexpr size_t kMinValues = 4;
    const auto& sections = context.trace.getSections();
    std::map<size_t, std::vector<std::string>> lacking;
    for (const auto& [key, part] : partsOf(context)) {
        const auto isSister = [owner = key.first](const ReadSection& each) {
            return each.owner == owner && each.object != nullptr;
        };
        const auto sisters = std::count_if(sections.begin(), sections.end(), isSister);
        if (part.size() >= kMinOwners && part.size() + 1 == static_cast<size_t>(sisters)) {
            size_t section = 0;
            while (!isSister(sections[section]) || part.count(section) != 0) {
                ++section;
            }
            lacking[section].emplace_back(key.second);
        }
        const ValueSetter* const setter = context.read(part.begin()->second).setter;
        if (part.size() >= kMinValues && setter != nullptr && !hasBands(setter)) {
            for (const Parameter param : setter->getParams()) {
                checkRows(context, part, param);
            }
        }
    }
    for (const auto& [section, names] : lacking) {
        addLacking(context, sections[section], names);
    }
}

}  // namespace ormel::tools
