// Compares what is alike: sections that lack what the others of their kind have, rows of another
// length, values and bands unlike their neighbours and unlike those in the same place elsewhere.
// Also checks numbers against an order, a count or the built-in mix matrix.
#include <ormel/SpatializerParamArray.h>
#include <ormel/TagIterator.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <functional>
#include <map>
#include <set>

#include "CheckMeaning.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

using Numbers = std::vector<int>;

/** The smallest and the largest of the values but one, whatever their signs. */
std::pair<long, long> amountsBut(const Numbers& values, size_t at) {
    long smallest = LONG_MAX;
    long largest = 0;
    for (size_t i = 0; i < values.size(); ++i) {
        smallest = i == at ? smallest : std::min(smallest, std::labs(values[i]));
        largest = i == at ? largest : std::max(largest, std::labs(values[i]));
    }
    return {smallest, largest};
}

/** The place of the value that is farthest from 0. */
size_t largestOf(const Numbers& values) {
    const auto isSmaller = [](long one, long other) { return std::labs(one) < std::labs(other); };
    return static_cast<size_t>(std::max_element(values.begin(), values.end(), isSmaller) -
                               values.begin());
}

/** Whether a value that is not small is over five times as large as any other. */
bool isOutOfProportion(const Numbers& values, size_t at, long least = 20) {
    const long largest = std::max(amountsBut(values, at).second, 1L);
    return std::labs(values[at]) >= least && std::labs(values[at]) > 5 * largest;
}

/** Whether the neighbours of a value have the other sign, and none of the three is small. */
bool isTurnedAt(const Numbers& values, size_t at) {
    constexpr int kLeast = 20;
    const auto isOpposite = [&](size_t i) {
        return i >= values.size() ||
               (std::labs(values[i]) >= kLeast && (values[i] > 0) != (values[at] > 0));
    };
    return values.size() > 2 && std::labs(values[at]) >= kLeast && isOpposite(at - 1) &&
           isOpposite(at + 1);
}

/** Whether a value would lie among others that all have the other sign if it had that as well. */
bool hasTurnedSign(const Numbers& values, size_t at, long least) {
    const auto isAlike = [&](int value) { return (value > 0) == (values[at] > 0); };
    const auto [smallest, largest] = amountsBut(values, at);
    const long amount = std::labs(values[at]);
    return std::count_if(values.begin(), values.end(), isAlike) == 1 &&
           std::min(amount, smallest) >= least && 3 * amount >= 2 * smallest &&
           2 * amount <= 3 * largest && largest <= 3 * smallest;
}

constexpr std::string_view kGeqPreset = "preset type=\"geq\" of its id";

/** The sections that have a part, and the last element of each that gives it. */
using Part = std::map<const ReadSection*, size_t>;

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
            parts[{sections[section].owner, name}][&sections[section]] = element;
        }
    };
    for (const ReadSection& section : sections) {
        if (section.object == nullptr) {
            continue;
        }
        if (section.owner == ParameterOwner::PROFILE_ENDPOINT) {
            const auto* const endpoint = static_cast<const ProfileEndpoint*>(section.object);
            add(section.outer, endpointName(endpoint->getEndpoint()), section.element);
        } else if (section.owner == ParameterOwner::PROFILE) {
            const auto* const profile = static_cast<const Profile*>(section.object);
            if (geqPresets.count(profile->getProfileId()) != 0) {
                parts[{section.owner, kGeqPreset}][&section] = section.element;
            }
        }
    }
    for (size_t i = 1; i < context.document.size(); ++i) {
        const bool isInclude = context.read(i).is(DocumentElement::INCLUDE);
        if (isInclude || context.read(i).as == ReadElement::As::PARAMETER) {
            const size_t owner = isInclude ? context.document.parent(i) : i;
            add(context.read(owner).section, context.document.name(i), i);
        }
    }
    return parts;
}

const char* outcomeOfLacking(std::string_view name) {
    return name == rowOf(DocumentElement::INCLUDE).name ? "preset 0 is taken"
           : name == kGeqPreset                         ? "no gebs entry is sent"
           : contains(kEndpointNames, name)
                   ? "nothing is sent for that endpoint"
                   : "entries that need it are sent without values or as 0";
}

void addLacking(const CheckContext& context, const ReadSection& section,
                std::vector<std::string> names) {
    constexpr size_t kMost = 3;
    const size_t others = names.size() - std::min(names.size(), kMost);
    names.resize(names.size() - others);
    // What a tuning lacks, its data lacks.
    const size_t part = section.sources.empty() ? section.element : section.sources.back().second;
    const bool isInData = section.owner == ParameterOwner::TUNING && part != section.element;
    context.add(Rule::ABSENT, isInData ? context.document.parent(part) : section.element, "lacks ",
                joined(names, ", "), others == 0 ? "" : concat(" and ", others, " more"),
                ", which all others of its kind have; ", outcomeOfLacking(names.front()));
}

/** What one section has of a parameter. */
struct Row {
    size_t element;
    const Numbers& values;
};

/** The numbers of rows that are equally long, each against those in its place. */
void checkPlaces(const CheckContext& context, const std::vector<Row>& rows) {
    const size_t length = rows.front().values.size();
    Numbers values(rows.size());
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
                const size_t other = i == 0 ? 1 : 0;
                context.add(Rule::IMPLAUSIBLE, rows[i].element,
                            length == 1 ? "is " : concat("number ", place + 1, " is "), *found,
                            "; in line ", context.document.line(rows[other].element), " it is ",
                            values[other]);
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
        rows.push_back({element, context.valuesOf(*section, param)});
        elementsByLength[rows.back().values.size()].push_back(element);
    }
    const auto [rare, usual] = std::minmax_element(
            elementsByLength.begin(), elementsByLength.end(),
            [](const auto& a, const auto& b) { return a.second.size() < b.second.size(); });
    if (elementsByLength.size() == 1) {
        checkPlaces(context, rows);
    } else if (elementsByLength.size() == 2 && rare->second.size() == 1 &&
               param != REGULATOR_STRESS_AMOUNT) {
        context.add(Rule::ROW_LENGTH, rare->second.front(), "has ",
                    countText(rare->first, "number", "numbers"),
                    ", but all others of its name have ", usual->first);
    }
}

/** The bands of one section that one setter read, column by column. */
struct Curve {
    const Numbers& frequencies() const { return *columns.front(); }

    std::vector<size_t> bands;
    std::vector<const Numbers*> columns;
};

/** The curves over a parameter's frequencies that are whole. */
std::vector<Curve> curvesOver(const CheckContext& context, Parameter frequency) {
    std::vector<Curve> curves;
    for (const ReadSection& section : context.trace.getSections()) {
        const size_t container = section.sourceOf(frequency);
        if (container == ReadSection::kNoElement || container == 0) {
            continue;
        }
        Curve curve;
        curve.bands = context.below(container, [&](size_t i) {
            return context.document.parent(i) == container &&
                   context.read(i).as == ReadElement::As::BAND;
        });
        if (curve.bands.empty()) {
            continue;
        }
        const size_t band = curve.bands.front();
        for (const Parameter param : context.read(band).setter->getParams()) {
            curve.columns.push_back(&context.valuesOf(context.section(band), param));
        }
        const auto isWhole = [size = curve.bands.size()](auto* each) {
            return each->size() == size;
        };
        if (std::all_of(curve.columns.begin(), curve.columns.end(), isWhole)) {
            curves.push_back(std::move(curve));
        }
    }
    return curves;
}

/** The frequencies that most curves have, if two or more have them; else null. */
const Numbers* usualFrequencies(const std::vector<Curve>& curves) {
    std::map<Numbers, size_t> counts;
    for (const Curve& curve : curves) {
        const size_t count = ++counts[curve.frequencies()];
        if (count >= 2 && 2 * count > curves.size()) {
            return &curve.frequencies();
        }
    }
    return nullptr;
}

/** Whether the frequencies ascend and are the usual ones, if there are such. */
bool checkFrequencies(const CheckContext& context, const Curve& curve, const Numbers* usual) {
    const Numbers& own = curve.frequencies();
    const auto fall = std::adjacent_find(own.begin(), own.end(), std::greater_equal<>());
    const bool isAscending = fall == own.end();
    const bool isUsual = usual == nullptr || own == *usual;
    if (isUsual && isAscending) {
        return true;
    }
    const auto at =
            isUsual ? fall + 1
                    : std::mismatch(own.begin(), own.end(), usual->begin(), usual->end()).first;
    const auto place = static_cast<size_t>(at - own.begin());
    const bool isExpected = !isUsual && place < usual->size();
    if (isExpected && isAscending && own.size() < usual->size()) {
        context.add(Rule::FREQUENCY_UNLIKE, context.document.parent(curve.bands.front()),
                    "lacks the band of frequency ", (*usual)[place], ", which most others have");
        return false;
    }
    const size_t band = std::min(place, own.size() - 1);
    const bool isFalling = band != 0 && own[band - 1] >= own[band];
    context.add(isAscending ? Rule::FREQUENCY_UNLIKE : Rule::FREQUENCY_ORDER, curve.bands[band],
                "frequency ", own[band],
                isAscending ? " differs from most curves"
                : isFalling ? concat(" is out of order after ", own[band - 1])
                            : " is out of order",
                isExpected ? concat("; most others have ", (*usual)[place]) : "");
    return false;
}

void checkThresholds(const CheckContext& context, const Curve& curve) {
    std::vector<size_t> crossed;
    for (size_t i = 0; i < curve.bands.size(); ++i) {
        if ((*curve.columns[1])[i] > (*curve.columns[2])[i]) {
            crossed.push_back(curve.bands[i]);
        }
    }
    if (!crossed.empty()) {
        const bool isOne = crossed.size() == 1;
        context.add(Rule::LOW_ABOVE_HIGH,
                    isOne ? crossed.front() : context.document.parent(crossed.front()),
                    isOne ? "has a threshold_low above its threshold_high"
                          : "has a threshold_low above the threshold_high in " +
                                    countText(crossed.size(), "band", "bands"));
    }
}

/** Values that stand apart from their column where those of no other curve do. */
void checkColumn(const CheckContext& context, const Curve& curve, size_t column,
                 const std::vector<Curve>& curves) {
    const Numbers& values = *curve.columns[column];
    const size_t largest = largestOf(values);
    // A single value has no others to compare with.
    for (size_t i = 0; i < values.size() && values.size() > 1; ++i) {
        const bool isTurned = isTurnedAt(values, i);
        const auto agrees = [&](const Curve& each) {
            const Numbers& other = *each.columns[column];
            return &each != &curve && other.size() == values.size() &&
                   (isTurned ? isTurnedAt(other, i) : std::labs(other[i]) >= std::labs(values[i]));
        };
        if ((isTurned || (i == largest && isOutOfProportion(values, i))) &&
            std::none_of(curves.begin(), curves.end(), agrees)) {
            const bool isFirst = i == 0;
            const bool isLast = i + 1 == values.size();
            context.add(Rule::IMPLAUSIBLE, curve.bands[i], "has ", values[i], " next to ",
                        values[isFirst ? i + 1 : i - 1],
                        isFirst || isLast ? "" : concat(" and ", values[i + 1]));
        }
    }
}

void checkCurvesOver(const CheckContext& context, Parameter frequency) {
    const std::vector<Curve> curves = curvesOver(context, frequency);
    const Numbers* const usual = usualFrequencies(curves);
    const bool isRegulator = frequency == REGULATOR_FREQUENCY;
    for (const Curve& curve : curves) {
        if (isRegulator) {
            checkThresholds(context, curve);
        }
        const bool isComparable = checkFrequencies(context, curve, usual) && usual != nullptr;
        const size_t end = !isComparable ? 0 : isRegulator ? 3 : curve.columns.size();
        for (size_t column = 1; column < end; ++column) {
            checkColumn(context, curve, column, curves);
        }
    }
}

/** The rows of a mix matrix, by element. */
using Rows = std::map<size_t, Numbers>;

constexpr const auto& kBuiltIn = SpatializerParamArray::kDefaultMixMatrix;

/** A matrix as long as the built-in one: blocks of two numbers, and as many more as the second. */
void checkBlocks(const CheckContext& context, const Rows& rows) {
    size_t block = 0;
    size_t at = 0;
    for (const auto& [element, row] : rows) {
        if (at == block && block < kBuiltIn.size()) {
            const int first = kBuiltIn[block];
            const int count = kBuiltIn[block + 1];
            if (row.size() < 2 || row[0] != first || row[1] != count) {
                context.add(Rule::MIX_MATRIX_BLOCK, element,
                            "has other numbers where the built-in matrix has ", first, ", ", count);
                return;
            }
            block += 2 + static_cast<size_t>(count);
        }
        at += row.size();
    }
}

/** A matrix of another length, or its row that is neither one of two nor like most others. */
void addLength(const CheckContext& context, size_t matrix, size_t length, const Rows& rows) {
    std::map<size_t, size_t> counts;
    for (const auto& [element, row] : rows) {
        ++counts[row.size()];
    }
    const auto usual = std::max_element(counts.begin(), counts.end(), [](auto one, auto other) {
        return one.second < other.second;
    });
    const auto odd = std::find_if(rows.begin(), rows.end(), [usual](const auto& each) {
        return each.second.size() != 2 && each.second.size() != usual->first;
    });
    size_t wanted = kBuiltIn.size();
    if (odd != rows.end()) {
        matrix = odd->first;
        length = odd->second.size();
        wanted = usual->first;
    } else if (!rows.empty()) {
        matrix = context.document.parent(rows.begin()->first);
    }
    context.add(Rule::MIX_MATRIX_LENGTH, matrix, "has ", countText(length, "number", "numbers"),
                "; write ", wanted);
}

void checkMatrix(const CheckContext& context, size_t matrix) {
    const size_t length = context.valuesOf(context.section(matrix), OUTPUT_MIX_MATRIX).size();
    Rows rows;
    for (size_t i = matrix; i < context.document.end(matrix); ++i) {
        if (context.read(i).as == ReadElement::As::ROW) {
            const auto attributes = context.document.attributes(i);
            string2IntVector(attributes.empty() ? "" : attributes.front().text, rows[i]);
        }
    }
    if (length == kBuiltIn.size()) {
        checkBlocks(context, rows);
    } else {
        addLength(context, matrix, length, rows);
    }
}

/** With under three channels the list is made two numbers long before it is sent. */
void checkStressAmounts(const CheckContext& context, size_t element) {
    const ReadSection& section = context.section(element);
    const size_t count = context.valuesOf(section, REGULATOR_STRESS_AMOUNT).size();
    const int channels = firstOr0(context.valuesOf(section, OUTPUT_CHANNELS));
    if (count != static_cast<size_t>(std::max(channels, 2))) {
        context.add(Rule::STRESS_AMOUNTS, element, "has ", countText(count, "number", "numbers"),
                    " for ", channels, channels == 1 ? " channel" : " channels",
                    channels < 3 ? "; two are sent" : "; they are sent as they are");
    }
}

/** The numbers of attributes that are read by their order alone. */
void checkSubgains(const CheckContext& context, size_t element) {
    std::vector<std::pair<size_t, std::string_view>> names;
    std::set<std::string_view> stems;
    for (const DocumentAttribute& attribute : context.document.attributes(element)) {
        const std::string_view name = attribute.name;
        names.emplace_back(name.size(), name);
        stems.insert(name.substr(0, name.find_last_not_of("0123456789") + 1));
    }
    if (stems.size() == 1 && !std::is_sorted(names.begin(), names.end())) {
        context.add(
                Rule::SUBGAIN_ORDER, element,
                "has its attributes out of order; they are read in the order in which they stand");
    }
}

void checkRange(const CheckContext& context, size_t element) {
    const ReadSection& section = context.section(element);
    const ValueSetter& setter = *context.read(element).setter;
    const int low = firstOr0(context.valuesOf(section, setter.getParam(0)));
    const int high = firstOr0(context.valuesOf(section, setter.getParam(1)));
    if (low > high) {
        context.add(Rule::LOW_ABOVE_HIGH, element, "goes from ", low, " to ", high);
    }
}

/** Parameters of tunings with numbers that go by others, and the check of their elements. */
constexpr std::pair<Parameter, void (*)(const CheckContext&, size_t)> kChecks[] = {
        {OUTPUT_MIX_MATRIX, checkMatrix},        {REGULATOR_STRESS_AMOUNT, checkStressAmounts},
        {VIRTUAL_BASS_MIX_FREQ_LOW, checkRange}, {VIRTUAL_BASS_SRC_FREQ_LOW, checkRange},
        {VIRTUAL_BASS_SUBGAINS, checkSubgains},
};

/** The parts of sections against those of the others of their kind. */
void checkParts(const CheckContext& context) {
    // It takes two others to call one the exception that lacks something, three of another's value.
    constexpr size_t kMinOwners = 2;
    constexpr size_t kMinValues = 4;
    const auto& sections = context.trace.getSections();
    std::map<const ReadSection*, std::vector<std::string>> lacking;
    for (const auto& [key, part] : partsOf(context)) {
        const auto isOfKind = [owner = key.first](const ReadSection& each) {
            return each.owner == owner && each.object != nullptr;
        };
        const auto count = std::count_if(sections.begin(), sections.end(), isOfKind);
        if (part.size() >= kMinOwners && part.size() + 1 == static_cast<size_t>(count)) {
            auto section = sections.begin();
            while (!isOfKind(*section) || part.count(&*section) != 0) {
                ++section;
            }
            lacking[&*section].emplace_back(key.second);
        }
        const ValueSetter* const setter = context.read(part.begin()->second).setter;
        const bool hasRows = dynamic_cast<const BandColumnsValueSetter*>(setter) == nullptr &&
                             dynamic_cast<const MixMatrixValueSetter*>(setter) == nullptr;
        if (part.size() >= kMinValues && setter != nullptr && hasRows) {
            for (const Parameter param : setter->getParams()) {
                checkRows(context, part, param);
            }
        }
    }
    for (const auto& [section, names] : lacking) {
        addLacking(context, *section, names);
    }
}

}  // namespace

void checkConsistency(const CheckContext& context) {
    checkParts(context);
    for (const Parameter frequency :
         {AUDIO_OPTIMIZER_FREQUENCY, GEQ_FREQUENCY, IEQ_FREQUENCY, REGULATOR_FREQUENCY}) {
        checkCurvesOver(context, frequency);
    }
    for (const ReadSection& section : context.trace.getSections()) {
        if (section.owner != ParameterOwner::TUNING || section.object == nullptr) {
            continue;
        }
        for (const auto& [param, check] : kChecks) {
            const size_t source = section.sourceOf(param);
            if (source != ReadSection::kNoElement) {
                check(context, source);
            }
        }
    }
}

}  // namespace ormel::tools
