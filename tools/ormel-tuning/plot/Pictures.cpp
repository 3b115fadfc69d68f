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

/** The headphone's devices all get what its endpoint asks for. */
constexpr int32_t kHeadphone = kHeadphoneDevices.front();

// clang-format off
constexpr PictureKind kProfileKinds[] = {
    {"intelligent equalizer targets", "Target", IEQ_ENABLE, IEQ_FREQUENCY, 0,
        {{"speaker", IEQ_TARGET, false, DEVICE_OUT_SPEAKER},
         {"headphone", IEQ_TARGET, false, kHeadphone}}},
    {"graphic equalizer gains", "Gain", GRAPHIC_EQUALIZER_ENABLE, GEQ_FREQUENCY, kGeqBands,
        {{"all devices", GEQ_GAIN}}},
};

constexpr PictureKind kTuningKinds[] = {
    {"audio optimizer gains", "Gain", AUDIO_OPTIMIZER_ENABLE, AUDIO_OPTIMIZER_FREQUENCY, 0,
        {{"left", AUDIO_OPTIMIZER_GAIN_L},
         {"right", AUDIO_OPTIMIZER_GAIN_R},
         {"left surround", AUDIO_OPTIMIZER_GAIN_LS, true},
         {"right surround", AUDIO_OPTIMIZER_GAIN_RS, true}}},
    {"regulator thresholds", "Threshold", REGULATOR_ENABLE, REGULATOR_FREQUENCY, 0,
        {{"low", REGULATOR_THRESHOLD_LOW},
         {"high", REGULATOR_THRESHOLD_HIGH}}},
    {"complex equalizer", "Value", COMPLEX_EQUALIZER_ENABLE, std::nullopt, 0,
        {{"left", COMPLEX_EQUALIZER_TUNING_LEFT},
         {"right", COMPLEX_EQUALIZER_TUNING_RIGHT},
         {"left surround", COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND, true},
         {"right surround", COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND, true}}},
};
// clang-format on

/** A profile or tuning, and what its pictures are made from. */
struct Owner {
    std::string name;
    /** The devices that have flags of their own, behind the words for them. */
    std::vector<std::pair<std::string, int32_t>> outputs;
    std::map<int32_t, std::map<Parameter, Values>> valuesOfDevice = {};
};

/** A profile, with the values that the effect keeps: of those for one device the last. */
Owner ownerOf(const EffectList& list) {
    Owner owner = {list.name.empty() ? "profile " + std::to_string(list.profile) : list.name,
                   {{"speaker ", DEVICE_OUT_SPEAKER}, {"headphone ", kHeadphone}}};
    for (const Entry& entry : list.entries) {
        const EntryLayout layout = layoutOf(entry.code);
        const bool isPlain = layout.head == EntryHead::NONE;
        std::map<Parameter, Values>& values = owner.valuesOfDevice[entry.device];
        for (const Parameter param : layout.lists.toVector()) {
            values[param] = isPlain ? entry.values : Values();
        }
        const Shape shape = shapeOf(entry.code, entry.values).value_or(Shape());
        for (const Shape::Column& column : shape.columns) {
            values[column.param] = column.values;
        }
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

Picture pictureOf(const PictureKind& kind, Owner& owner) {
    std::vector<std::string> flags;
    // What is for all devices is on if it is for some.
    std::set<int32_t> on;
    for (const auto& [word, device] : owner.outputs) {
        const Values& flag = owner.valuesOfDevice[device][kind.flag];
        flags.push_back(word + (flag.empty() ? "absent" : std::to_string(flag.front())));
        // An absent one leaves the effect as it is.
        if (flag.empty() || flag.front() != 0) {
            on.insert({device, DEVICE_OUT_DEFAULT});
        }
    }
    const std::string flagName = kParameterNames[kind.flag];
    Picture picture = {&kind, {owner.name}, flagName + ": " + joined(flags, ", ")};
    const bool hasSurrounds =
            firstOr0(owner.valuesOfDevice[DEVICE_OUT_DEFAULT][OUTPUT_CHANNELS]) > 2;
    for (const PictureKind::CurveRow& row : kind.curves) {
        auto& values = owner.valuesOfDevice[row.device];
        if (row.name == nullptr || values.count(row.values) == 0 ||
            (row.isSurround && !hasSurrounds)) {
            continue;
        }
        const size_t size = values[row.values].size();
        Values places(size);
        std::iota(places.begin(), places.end(), 1);
        if (kind.frequency.has_value()) {
            places = values[*kind.frequency];
        }
        const bool isSent = kind.bands == 0 || kind.bands == size;
        if (!isSent) {
            picture.flags += "; not sent, since it has " + countText(size, "band", "bands");
        }
        const bool isOff = !isSent || on.count(row.device) == 0;
        addCurve(picture, {row.name, places, values[row.values], isOff});
    }
    return picture;
}

/** One picture of each kind for every owner. */
std::vector<Picture> allPictures(const LoadedDocument& document, const PictureChoice& choice) {
    std::vector<Picture> pictures;
    const auto add = [&pictures](const auto& kinds, Owner owner) {
        for (const PictureKind& kind : kinds) {
            pictures.push_back(pictureOf(kind, owner));
        }
    };
    const auto& names = choice.tunings;
    const bool isAll = names.empty() && !choice.profile.has_value();
    for (const EffectList& list : document.lists()) {
        const bool isProfile = list.kind == EffectList::Kind::PROFILE;
        if (isProfile && (isAll || choice.profile == list.profile)) {
            add(kProfileKinds, ownerOf(list));
        }
    }
    for (const Tuning* const tuning : document.objects().getTunings()) {
        const std::string name = tuning->getName();
        if (isAll || std::find(names.begin(), names.end(), name) != names.end()) {
            add(kTuningKinds,
                {name, {{"", DEVICE_OUT_DEFAULT}}, {{DEVICE_OUT_DEFAULT, tuning->getValues()}}});
        }
    }
    return pictures;
}

/** Those that show the same as one, without those that have no curves. */
std::vector<Picture> merged(const std::vector<Picture>& pictures) {
    std::vector<Picture> all;
    for (const Picture& picture : pictures) {
        const auto same = std::find_if(all.begin(), all.end(), [&picture](const Picture& other) {
            return std::tie(other.kind, other.flags, other.curves) ==
                   std::tie(picture.kind, picture.flags, picture.curves);
        });
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

std::string titleOf(const Picture& picture) {
    return joined(picture.owners, ", ") + ": " + picture.kind->title;
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
