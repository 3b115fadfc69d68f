#include "Pictures.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <numeric>
#include <set>
#include <tuple>
#include <utility>

#include "text/Text.h"

namespace ormel::tools {

namespace {

using Values = std::vector<int32_t>;
using Kind = Picture::Kind;

struct KindRow {
    const char* title;
    const char* valueName;
    Parameter flag;
    /** What the values run over; none for the places of a list. */
    std::optional<Parameter> frequency;
    /** The only number of bands that is sent; 0 where any is. */
    size_t bands;
};

struct CurveRow {
    Kind kind;
    const char* name;
    Parameter values;
    /** Whether it is sent where there are more than two channels alone. */
    bool isSurround = false;
    /** The device that gets it; a tuning's values are under this one. */
    int32_t device = DEVICE_OUT_DEFAULT;
};

/** The headphone's devices all get what its endpoint asks for. */
constexpr int32_t kHeadphone = kHeadphoneDevices.front();

// clang-format off
/** By kind. */
constexpr KindRow kKinds[] = {
    {"intelligent equalizer targets", "Target", IEQ_ENABLE, IEQ_FREQUENCY, 0},
    {"graphic equalizer gains", "Gain", GRAPHIC_EQUALIZER_ENABLE, GEQ_FREQUENCY, kGeqBands},
    {"audio optimizer gains", "Gain", AUDIO_OPTIMIZER_ENABLE, AUDIO_OPTIMIZER_FREQUENCY, 0},
    {"regulator thresholds", "Threshold", REGULATOR_ENABLE, REGULATOR_FREQUENCY, 0},
    {"complex equalizer", "Value", COMPLEX_EQUALIZER_ENABLE, std::nullopt, 0},
};

constexpr CurveRow kCurves[] = {
    {Kind::IEQ_TARGETS, "speaker", IEQ_TARGET, false, DEVICE_OUT_SPEAKER},
    {Kind::IEQ_TARGETS, "headphone", IEQ_TARGET, false, kHeadphone},
    {Kind::GEQ_GAINS, "all devices", GEQ_GAIN},
    {Kind::OPTIMIZER_GAINS, "left", AUDIO_OPTIMIZER_GAIN_L},
    {Kind::OPTIMIZER_GAINS, "right", AUDIO_OPTIMIZER_GAIN_R},
    {Kind::OPTIMIZER_GAINS, "left surround", AUDIO_OPTIMIZER_GAIN_LS, true},
    {Kind::OPTIMIZER_GAINS, "right surround", AUDIO_OPTIMIZER_GAIN_RS, true},
    {Kind::THRESHOLDS, "low", REGULATOR_THRESHOLD_LOW},
    {Kind::THRESHOLDS, "high", REGULATOR_THRESHOLD_HIGH},
    {Kind::COMPLEX_EQ, "left", COMPLEX_EQUALIZER_TUNING_LEFT},
    {Kind::COMPLEX_EQ, "right", COMPLEX_EQUALIZER_TUNING_RIGHT},
    {Kind::COMPLEX_EQ, "left surround", COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND, true},
    {Kind::COMPLEX_EQ, "right surround", COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND, true},
};
// clang-format on

const KindRow& rowOf(Kind kind) {
    return kKinds[static_cast<size_t>(kind)];
}

/** A profile or tuning, and what its pictures are made from. */
struct Owner {
    std::string name;
    /** The devices that have flags of their own, behind the words for them. */
    std::vector<std::pair<std::string, int32_t>> outputs;
    /** By parameter and device. */
    std::map<std::pair<Parameter, int32_t>, Values> values = {};

    Values valuesOf(Parameter param, int32_t device) const {
        const auto found = values.find({param, device});
        return found == values.end() ? Values() : found->second;
    }
};

/** A profile, with the values that the effect keeps: of those for one device the last. */
Owner ownerOf(const EffectList& list) {
    Owner owner = {list.name.empty() ? "profile " + std::to_string(list.profile) : list.name,
                   {{"speaker ", DEVICE_OUT_SPEAKER}, {"headphone ", kHeadphone}}};
    for (const Entry& entry : list.entries) {
        const EntryLayout layout = layoutOf(entry.code);
        const bool isPlain = layout.head == EntryHead::NONE;
        const Shape shape = shapeOf(entry.code, entry.values).value_or(Shape());
        for (const Parameter param : layout.lists.toVector()) {
            const auto* const column = findColumn(shape, param);
            Values& values = owner.values[{param, entry.device}];
            values = column != nullptr ? column->values : isPlain ? entry.values : Values();
        }
    }
    return owner;
}

Owner ownerOf(const Tuning& tuning) {
    Owner owner = {tuning.getName(), {{"", DEVICE_OUT_DEFAULT}}};
    for (const auto& [param, values] : tuning.getValues()) {
        owner.values[{param, DEVICE_OUT_DEFAULT}] = values;
    }
    return owner;
}

/** Adds a curve, or just its name to the same one that is there already. */
void addCurve(Picture& picture, Curve curve) {
    const size_t size = std::min(curve.places.size(), curve.values.size());
    curve.places.resize(size);
    curve.values.resize(size);
    if (size == 0) {
        return;
    }
    for (Curve& other : picture.curves) {
        if (std::tie(other.places, other.values, other.isOff) ==
            std::tie(curve.places, curve.values, curve.isOff)) {
            other.name += ", " + curve.name;
            return;
        }
    }
    picture.curves.push_back(std::move(curve));
}

Picture pictureOf(Kind kind, const Owner& owner) {
    const KindRow& row = rowOf(kind);
    std::vector<std::string> flags;
    // What is for all devices is on if it is for some.
    std::set<int32_t> on;
    for (const auto& [word, device] : owner.outputs) {
        const Values flag = owner.valuesOf(row.flag, device);
        flags.push_back(word + (flag.empty() ? "absent" : std::to_string(flag.front())));
        // An absent one leaves the effect as it is.
        if (flag.empty() || flag.front() != 0) {
            on.insert({device, DEVICE_OUT_DEFAULT});
        }
    }
    Picture picture = {
            kind, {owner.name}, kParameterNames[row.flag] + (": " + joined(flags, ", "))};
    const bool hasSurrounds = firstOr0(owner.valuesOf(OUTPUT_CHANNELS, DEVICE_OUT_DEFAULT)) > 2;
    for (const CurveRow& curveRow : kCurves) {
        const auto values = owner.values.find({curveRow.values, curveRow.device});
        if (curveRow.kind != kind || values == owner.values.end() ||
            (curveRow.isSurround && !hasSurrounds)) {
            continue;
        }
        const size_t size = values->second.size();
        Curve curve = {curveRow.name, Values(size), values->second};
        if (row.frequency.has_value()) {
            curve.places = owner.valuesOf(*row.frequency, curveRow.device);
        } else {
            std::iota(curve.places.begin(), curve.places.end(), 1);
        }
        const bool isSent = row.bands == 0 || row.bands == size;
        if (!isSent) {
            picture.flags += "; not sent, since it has " + countText(size, "band", "bands");
        }
        curve.isOff = !isSent || on.count(curveRow.device) == 0;
        addCurve(picture, std::move(curve));
    }
    return picture;
}

/** One picture of each kind for every owner. */
std::vector<Picture> allPictures(const LoadedDocument& document, const PictureChoice& choice) {
    std::vector<Picture> pictures;
    const auto add = [&pictures](const Owner& owner, std::initializer_list<Kind> kinds) {
        for (const Kind kind : kinds) {
            pictures.push_back(pictureOf(kind, owner));
        }
    };
    const bool isAll = choice.tunings.empty() && !choice.profile.has_value();
    for (const EffectList& list : document.lists()) {
        const bool isChosen = isAll || choice.profile == list.profile;
        if (list.kind == EffectList::Kind::PROFILE && isChosen) {
            add(ownerOf(list), {Kind::IEQ_TARGETS, Kind::GEQ_GAINS});
        }
    }
    const auto& names = choice.tunings;
    for (const Tuning* const tuning : document.objects().getTunings()) {
        if (isAll || std::find(names.begin(), names.end(), tuning->getName()) != names.end()) {
            add(ownerOf(*tuning), {Kind::OPTIMIZER_GAINS, Kind::THRESHOLDS, Kind::COMPLEX_EQ});
        }
    }
    return pictures;
}

/** Without those that have no curves. */
std::vector<Picture> merged(const std::vector<Picture>& pictures) {
    std::vector<Picture> all;
    for (const Picture& picture : pictures) {
        const auto same = std::find(all.begin(), all.end(), picture);
        if (same != all.end()) {
            same->owners.push_back(picture.owners.front());
        } else if (!picture.curves.empty()) {
            all.push_back(picture);
        }
    }
    return all;
}

/** Adds the curves that are otherwise in other pictures. */
void addOldPictures(const std::vector<Picture>& olds, std::vector<Picture>& pictures) {
    for (const Picture& old : olds) {
        auto now = std::find_if(pictures.begin(), pictures.end(), [&old](const Picture& other) {
            return other.kind == old.kind && other.owners == old.owners;
        });
        if (now == pictures.end()) {
            now = pictures.insert(now, {old.kind, old.owners, "only in the old document"});
        }
        for (Curve curve : old.curves) {
            const auto end = now->curves.end();
            if (std::find(now->curves.begin(), end, curve) == end) {
                curve.isOld = true;
                now->curves.push_back(std::move(curve));
            }
        }
        if (old.flags != now->flags) {
            now->flags += "; old: " + old.flags;
        }
    }
}

}  // namespace

bool operator==(const Curve& left, const Curve& right) {
    return std::tie(left.name, left.places, left.values, left.isOff, left.isOld) ==
           std::tie(right.name, right.places, right.values, right.isOff, right.isOld);
}

bool operator==(const Picture& left, const Picture& right) {
    return std::tie(left.kind, left.flags, left.curves) ==
           std::tie(right.kind, right.flags, right.curves);
}

std::string titleOf(const Picture& picture) {
    return joined(picture.owners, ", ") + ": " + rowOf(picture.kind).title;
}

const char* valueName(Kind kind) {
    return rowOf(kind).valueName;
}

bool isOverFrequency(Kind kind) {
    return rowOf(kind).frequency.has_value();
}

std::vector<Picture> picturesOf(const LoadedDocument& document, const LoadedDocument* old,
                                const PictureChoice& choice) {
    std::vector<Picture> pictures = allPictures(document, choice);
    if (old != nullptr) {
        addOldPictures(allPictures(*old, choice), pictures);
    }
    return merged(pictures);
}

}  // namespace ormel::tools
