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

/** Others of a kind that it takes to call one the exception. */
constexpr size_t kMinOthers = 2;

/** An element, and the section that it was read into. */
struct Part {
    size_t section;
    size_t element;
};

/** Places of the largest value, and of one that is alone in its sign. */
std::vector<size_t> exceptionsIn(const std::vector<int>& values) {
    const auto begin = values.begin();
    const auto isPositive = [](int value) { return value > 0; };
    std::vector<size_t> places = {largestOf(values)};
    const auto positives = std::count_if(begin, values.end(), isPositive);
    if (positives == 1) {
        const auto only = std::find_if(begin, values.end(), isPositive);
        places.push_back(static_cast<size_t>(only - begin));
    } else if (static_cast<size_t>(positives) + 1 == values.size()) {
        const auto only = std::find_if_not(begin, values.end(), isPositive);
        places.push_back(static_cast<size_t>(only - begin));
    }
    return places;
}

/** Whether a value would lie among others that all have the other sign if it had that as well. */
bool hasTurnedSign(const std::vector<int>& values, size_t at, long least) {
    const long size = std::labs(values[at]);
    long smallest = LONG_MAX;
    long largest = 0;
    for (size_t i = 0; i < values.size(); ++i) {
        if (i != at && (values[i] > 0) == (values[at] > 0)) {
            return false;
        }
        smallest = i == at ? smallest : std::min(smallest, std::labs(values[i]));
        largest = i == at ? largest : std::max(largest, std::labs(values[i]));
    }
    return std::min(size, smallest) >= least && 3 * size >= 2 * smallest &&
           2 * size <= 3 * largest && largest <= 3 * smallest;
}

class SisterCheck {
  public:
    explicit SisterCheck(const CheckContext& context)
        : mContext(context), mDocument(context.document) {}

    void run() {
        collect();
        for (const auto& [key, parts] : mParts) {
            const std::vector<size_t>& sections = mSections[key.first];
            if (parts.size() > kMinOthers - 1 && parts.size() + 1 == sections.size()) {
                mLacking[lackingOf(sections, parts)].push_back(key.second);
            }
            const ValueSetter* const setter = mContext.read(parts.front().element).setter;
            if (parts.size() > kMinOthers + 1 && setter != nullptr && !hasBands(setter)) {
                checkValues(*setter, parts);
            }
        }
        for (const auto& [section, names] : mLacking) {
            addLacking(section, names);
        }
        for (const size_t section : mSections[ParameterOwner::TUNING]) {
            checkStressAmounts(section);
        }
    }

  private:
    using Key = std::pair<ParameterOwner, std::string_view>;

    static constexpr std::string_view kGeqPreset = "preset type=\"geq\" of its id";

    static bool hasBands(const ValueSetter* setter) {
        return dynamic_cast<const BandColumnsValueSetter*>(setter) != nullptr ||
               dynamic_cast<const PresetBandsValueSetter*>(setter) != nullptr ||
               dynamic_cast<const MixMatrixValueSetter*>(setter) != nullptr;
    }

    void collect() {
        std::set<int> geqPresets;
        for (const GeqPreset* const preset : mContext.data.getGeqPresets()) {
            geqPresets.insert(preset->getProfileId());
        }
        const auto& sections = mContext.trace.getSections();
        for (size_t i = 0; i < sections.size(); ++i) {
            const ReadSection& section = sections[i];
            if (section.object == nullptr) {
                continue;
            }
            mSections[section.owner].push_back(i);
            if (section.owner == ParameterOwner::PROFILE) {
                const auto* const profile = static_cast<const Profile*>(section.object);
                if (geqPresets.count(profile->getProfileId()) != 0) {
                    add({section.owner, kGeqPreset}, {i, section.element});
                }
            } else if (section.owner == ParameterOwner::PROFILE_ENDPOINT &&
                       section.outer != ReadElement::kNoSection) {
                const auto* const endpoint = static_cast<const ProfileEndpoint*>(section.object);
                add({ParameterOwner::PROFILE, endpointName(endpoint->getEndpoint())},
                    {section.outer, section.element});
            }
        }
        for (size_t i = 1; i < mDocument.size(); ++i) {
            collectElement(i);
        }
    }

    void collectElement(size_t element) {
        const ReadElement& record = mContext.read(element);
        const bool isInclude = record.is(DocumentElement::INCLUDE);
        const size_t section =
                isInclude ? mContext.read(mDocument.parent(element)).section : record.section;
        if ((!isInclude && record.as != ReadElement::As::PARAMETER) ||
            section == ReadElement::kNoSection) {
            return;
        }
        const ReadSection& read = mContext.trace.getSections()[section];
        if (read.object != nullptr) {
            add({read.owner, mDocument.name(element)}, {section, element});
        }
        if (record.setter != nullptr) {
            checkOrder(*record.setter, element);
        }
    }

    void add(const Key& key, const Part& part) {
        std::vector<Part>& parts = mParts[key];
        if (!parts.empty() && parts.back().section == part.section) {
            parts.pop_back();
        }
        parts.push_back(part);
    }

    static size_t lackingOf(const std::vector<size_t>& sections, const std::vector<Part>& parts) {
        size_t i = 0;
        while (i < parts.size() && parts[i].section == sections[i]) {
            ++i;
        }
        return sections[i];
    }

    void addLacking(size_t section, const std::vector<std::string_view>& names) const {
        constexpr size_t kMost = 3;
        std::string what;
        for (size_t i = 0; i < std::min(names.size(), kMost); ++i) {
            what += (what.empty() ? "" : ", ") + std::string(names[i]);
        }
        if (names.size() > kMost) {
            what += " and " + std::to_string(names.size() - kMost) + " more";
        }
        const ReadSection& read = mContext.trace.getSections()[section];
        // What a tuning lacks, its data lacks.
        const size_t part = read.sources.empty() ? read.element : read.sources.back().second;
        const bool isInData = read.owner == ParameterOwner::TUNING && part != read.element;
        mContext.add(Rule::ABSENT, isInData ? mDocument.parent(part) : read.element,
                     "lacks " + what + ", which all others of its kind have; " +
                             outcomeOf(names.front()));
    }

    static const char* outcomeOf(std::string_view name) {
        return name == rowOf(DocumentElement::INCLUDE).name ? "preset 0 is taken"
               : name == kGeqPreset                         ? "no gebs entry is sent"
               : contains(kEndpointNames, name)             ? "nothing is sent for that endpoint"
                                                : "what needs it goes out without values or as 0";
    }

    /** Attributes that are read by their order, and ranges. */
    void checkOrder(const ValueSetter& setter, size_t element) const {
        if (dynamic_cast<const VirtualBassSubgainValueSetter*>(&setter) != nullptr) {
            std::vector<std::pair<size_t, std::string>> names;
            std::set<std::string> stems;
            for (const DocumentAttribute& attribute : mDocument.attributes(element)) {
                const std::string name(attribute.name);
                names.emplace_back(name.size(), name);
                stems.insert(name.substr(0, name.find_last_not_of("0123456789") + 1));
            }
            if (stems.size() == 1 && !std::is_sorted(names.begin(), names.end())) {
                mContext.add(Rule::SUBGAIN_ORDER, element,
                             "has its attributes out of order, and they are read as they stand");
            }
        } else if (dynamic_cast<const VirtualBassValueSetter*>(&setter) != nullptr) {
            const size_t section = mContext.read(element).section;
            const int low = firstOr0(mContext.valuesOf(section, setter.getParam(0)));
            const int high = firstOr0(mContext.valuesOf(section, setter.getParam(1)));
            if (low > high) {
                mContext.add(Rule::LOW_ABOVE_HIGH, element,
                             "goes from " + std::to_string(low) + " to " + std::to_string(high));
            }
        }
    }

    /** What one element of each section comes to. */
    void checkValues(const ValueSetter& setter, const std::vector<Part>& parts) const {
        for (size_t i = 0; i < setter.getParamCount(); ++i) {
            const Parameter param = setter.getParam(i);
            std::vector<const std::vector<int>*> rows;
            rows.reserve(parts.size());
            for (const Part& part : parts) {
                rows.push_back(&mContext.valuesOf(part.section, param));
            }
            std::map<size_t, size_t> lengths;
            for (const auto* const row : rows) {
                ++lengths[row->size()];
            }
            if (lengths.size() == 1) {
                checkPlaces(parts, rows);
            } else if (lengths.size() == 2 && param != REGULATOR_STRESS_AMOUNT) {
                checkLengths(parts, rows, lengths);
            }
        }
    }

    void checkLengths(const std::vector<Part>& parts,
                      const std::vector<const std::vector<int>*>& rows,
                      const std::map<size_t, size_t>& lengths) const {
        const auto [least, most] = std::minmax_element(
                lengths.begin(), lengths.end(),
                [](const auto& one, const auto& other) { return one.second < other.second; });
        for (size_t i = 0; i < rows.size() && least->second == 1; ++i) {
            if (rows[i]->size() == least->first) {
                mContext.add(Rule::ROW_LENGTH, parts[i].element,
                             "has " + countText(least->first, "number", "numbers") +
                                     ", and all others of its name have " +
                                     std::to_string(most->first));
            }
        }
    }

    /** Each number against those in its place. */
    void checkPlaces(const std::vector<Part>& parts,
                     const std::vector<const std::vector<int>*>& rows) const {
        const bool isRow = rows.front()->size() > 1;
        std::vector<int> values(rows.size());
        for (size_t place = 0; place < rows.front()->size(); ++place) {
            for (size_t i = 0; i < rows.size(); ++i) {
                values[i] = (*rows[i])[place];
            }
            for (const size_t i : exceptionsIn(values)) {
                // In a row the sign alone says little, unless the neighbours have the other too.
                const bool isSure = !isRow || (place != 0 && place + 1 != rows[i]->size() &&
                                               isTurnedAt(*rows[i], place));
                if (hasTurnedSign(values, i, isSure ? 20 : 100) ||
                    isOutOfProportion(values, i, isRow ? 100 : 20)) {
                    mContext.add(Rule::IMPLAUSIBLE, parts[i].element,
                                 "has " + std::to_string(values[i]) + " where others have " +
                                         std::to_string(values[i == 0 ? 1 : 0]) + " or so");
                    return;
                }
            }
        }
    }

    /** With under three channels the list is made two numbers long before it is sent. */
    void checkStressAmounts(size_t section) const {
        const size_t source =
                mContext.trace.getSections()[section].sourceOf(REGULATOR_STRESS_AMOUNT);
        const size_t count = mContext.valuesOf(section, REGULATOR_STRESS_AMOUNT).size();
        const int channels = firstOr0(mContext.valuesOf(section, OUTPUT_CHANNELS));
        const size_t wanted = channels < 3 ? 2 : static_cast<size_t>(channels);
        if (source != ReadSection::kNoElement && count != wanted) {
            mContext.add(Rule::STRESS_AMOUNTS, source,
                         "has " + countText(count, "number", "numbers") + " for " +
                                 countText(static_cast<size_t>(channels), "channel", "channels") +
                                 (channels < 3 ? "; two are sent" : "; they are sent as they are"));
        }
    }

    const CheckContext& mContext;
    const CheckDocument& mDocument;
    std::map<ParameterOwner, std::vector<size_t>> mSections;
    std::map<Key, std::vector<Part>> mParts;
    std::map<size_t, std::vector<std::string_view>> mLacking;
};

}  // namespace

size_t largestOf(const std::vector<int>& values) {
    const auto isSmaller = [](long one, long other) { return std::labs(one) < std::labs(other); };
    return static_cast<size_t>(std::max_element(values.begin(), values.end(), isSmaller) -
                               values.begin());
}

bool isOutOfProportion(const std::vector<int>& values, size_t at, long least) {
    long largest = 1;
    for (size_t i = 0; i < values.size(); ++i) {
        largest = i == at ? largest : std::max(largest, std::labs(values[i]));
    }
    return std::labs(values[at]) >= least && std::labs(values[at]) > 5 * largest;
}

bool isTurnedAt(const std::vector<int>& values, size_t at) {
    constexpr int kLeast = 20;
    const auto isOpposite = [&](size_t i) {
        return i >= values.size() ||
               (std::abs(values[i]) >= kLeast && (values[i] > 0) != (values[at] > 0));
    };
    return values.size() > 2 && std::abs(values[at]) >= kLeast && isOpposite(at - 1) &&
           isOpposite(at + 1);
}

void checkSisters(const CheckContext& context) {
    SisterCheck(context).run();
}

}  // namespace ormel::tools
