#include "Pictures.h"

#include <ormel/KivParameter.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "text/Names.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

using Values = std::vector<int32_t>;
using Kind = Picture::Kind;

struct KindRow {
    const char* title;
    const char* valueName;
    bool isOverFrequency;
};

/** By kind. */
constexpr KindRow kKinds[] = {
        {"intelligent equalizer targets", "Target", true},
        {"graphic equalizer gains", "Gain", true},
        {"audio optimizer gains", "Gain", true},
        {"regulator thresholds", "Threshold", true},
        {"complex equalizer", "Value", false},
};

const KindRow& rowOf(Kind kind) {
    return kKinds[static_cast<size_t>(kind)];
}

/** The headphone's devices all get what its endpoint asks for. */
constexpr std::pair<int32_t, Endpoint> kOutputs[] = {
        {DEVICE_OUT_SPEAKER, ENDPOINT_SPEAKER}, {kHeadphoneDevices.front(), ENDPOINT_HEADPHONE}};

/** Adds a curve, or just its name to the same one that is there already. */
void addCurve(Picture& picture, Curve curve) {
    const size_t size = std::min(curve.places.size(), curve.values.size());
    curve.places.resize(size);
    curve.values.resize(size);
    if (size == 0) {
        return;
    }
    const auto same = std::find_if(
            picture.curves.begin(), picture.curves.end(), [&curve](const Curve& other) {
                return other.places == curve.places && other.values == curve.values &&
                       other.isOff == curve.isOff;
            });
    if (same == picture.curves.end()) {
        curve.style = picture.curves.size();
        picture.curves.push_back(std::move(curve));
    } else {
        same->name.append(", ").append(curve.name);
    }
}

/** What the effect keeps of a list's entries for a device and a code; null without any. */
const Entry* lastEntry(const EffectList& list, int32_t device, KivParameter param) {
    const auto found = std::find_if(list.entries.rbegin(), list.entries.rend(),
                                    [device, code = kivCode(param)](const Entry& entry) {
                                        return entry.device == device && entry.code == code;
                                    });
    return found == list.entries.rend() ? nullptr : &*found;
}

/** A flag as text and whether it switches off; absent ones leave the effect as it is. */
std::pair<std::string, bool> flagOf(const Values* values) {
    if (values == nullptr || values->empty()) {
        return {"absent", false};
    }
    return {std::to_string(values->front()), values->front() == 0};
}

void addEntry(Picture& picture, const Entry* entry, Parameter frequency, Parameter value,
              Curve curve) {
    const auto shape = entry == nullptr ? std::nullopt : shapeOf(entry->code, entry->values);
    if (shape.has_value()) {
        curve.places = findColumn(*shape, frequency)->values;
        curve.values = findColumn(*shape, value)->values;
        addCurve(picture, std::move(curve));
    }
}

void addProfilePictures(const EffectList& list, std::vector<Picture>& pictures) {
    const std::string owner =
            list.name.empty() ? "profile " + std::to_string(list.profile) : list.name;
    const auto flagText = [&list](KivParameter flag, bool& isOffForAll) {
        std::string text;
        isOffForAll = true;
        for (const auto& [device, endpoint] : kOutputs) {
            const Entry* const entry = lastEntry(list, device, flag);
            const auto [word, isOff] = flagOf(entry == nullptr ? nullptr : &entry->values);
            text.append(text.empty() ? ": " : ", ").append(endpointName(endpoint));
            text.append(" ").append(word);
            isOffForAll = isOffForAll && isOff;
        }
        return text;
    };
    bool isOff = false;
    Picture intelligent = {Kind::IEQ_TARGETS, {owner}, "ieq_enable" + flagText(IEON, isOff), {}};
    for (const auto& [device, endpoint] : kOutputs) {
        const Entry* const flag = lastEntry(list, device, IEON);
        Curve curve = {endpointName(endpoint), {}, {}};
        curve.isOff = flagOf(flag == nullptr ? nullptr : &flag->values).second;
        addEntry(intelligent, lastEntry(list, device, IEBS), IEQ_FREQUENCY, IEQ_TARGET,
                 std::move(curve));
    }
    Picture graphic = {
            Kind::GEQ_GAINS, {owner}, "graphic_equalizer_enable" + flagText(GEON, isOff), {}};
    const Entry* const bands = lastEntry(list, DEVICE_OUT_DEFAULT, GEBS);
    // An entry of other than as many gains as frequencies has no band.
    const auto shape = bands == nullptr ? std::nullopt : shapeOf(bands->code, bands->values);
    const size_t whole = shape.has_value() ? findColumn(*shape, GEQ_GAIN)->values.size() : 0;
    const size_t count = bands == nullptr ? kGeqBands : whole;
    if (count != kGeqBands) {
        graphic.flags += "; not sent, since it has " + countText(count, "band", "bands");
    }
    Curve gains = {"all devices", {}, {}};
    gains.isOff = isOff || count != kGeqBands;
    addEntry(graphic, bands, GEQ_FREQUENCY, GEQ_GAIN, std::move(gains));
    pictures.push_back(std::move(intelligent));
    pictures.push_back(std::move(graphic));
}

struct ChannelParam {
    const char* channel;
    Parameter param;
};

/** What one kind of picture shows of a tuning. */
struct TuningRow {
    Kind kind;
    Parameter flag;
    /** What the values run over; for a kind over places none. */
    std::optional<Parameter> frequency;
    std::vector<ChannelParam> params;
    /** Whether those from the third on are sent where there are surrounds alone. */
    bool isByChannel;
};

const std::vector<TuningRow>& tuningRows() {
    static const auto& rows = *new std::vector<TuningRow>{
            {Kind::OPTIMIZER_GAINS,
             AUDIO_OPTIMIZER_ENABLE,
             AUDIO_OPTIMIZER_FREQUENCY,
             {{"left", AUDIO_OPTIMIZER_GAIN_L},
              {"right", AUDIO_OPTIMIZER_GAIN_R},
              {"left surround", AUDIO_OPTIMIZER_GAIN_LS},
              {"right surround", AUDIO_OPTIMIZER_GAIN_RS}},
             true},
            {Kind::THRESHOLDS,
             REGULATOR_ENABLE,
             REGULATOR_FREQUENCY,
             {{"low", REGULATOR_THRESHOLD_LOW}, {"high", REGULATOR_THRESHOLD_HIGH}},
             false},
            {Kind::COMPLEX_EQ,
             COMPLEX_EQUALIZER_ENABLE,
             std::nullopt,
             {{"left", COMPLEX_EQUALIZER_TUNING_LEFT},
              {"right", COMPLEX_EQUALIZER_TUNING_RIGHT},
              {"left surround", COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND},
              {"right surround", COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND}},
             true},
    };
    return rows;
}

Picture tuningPicture(const Tuning& tuning, const TuningRow& row) {
    const auto valuesOf = [&tuning](Parameter param) {
        const auto found = tuning.getValues().find(param);
        return found == tuning.getValues().end() ? Values() : found->second;
    };
    const Values flag = valuesOf(row.flag);
    const auto [word, isOff] = flagOf(&flag);
    Picture picture = {row.kind, {tuning.getName()}, kParameterNames[row.flag] + (": " + word), {}};
    const bool hasSurrounds = firstOr0(valuesOf(OUTPUT_CHANNELS)) > 2;
    const size_t count = row.isByChannel && !hasSurrounds ? 2 : row.params.size();
    for (size_t i = 0; i < count; ++i) {
        Curve curve = {row.params[i].channel, {}, valuesOf(row.params[i].param)};
        if (row.frequency.has_value()) {
            curve.places = valuesOf(*row.frequency);
        } else {
            for (size_t place = 1; place <= curve.values.size(); ++place) {
                curve.places.push_back(static_cast<int32_t>(place));
            }
        }
        curve.isOff = isOff;
        addCurve(picture, std::move(curve));
    }
    return picture;
}

/** One picture of each kind for every owner. */
std::vector<Picture> allPictures(const LoadedDocument& document, const PictureChoice& choice) {
    std::vector<Picture> pictures;
    const bool isAll = choice.tunings.empty() && !choice.profile.has_value();
    for (const EffectList& list : document.lists()) {
        const bool isChosen = isAll || choice.profile == list.profile;
        if (list.kind == EffectList::Kind::PROFILE && isChosen) {
            addProfilePictures(list, pictures);
        }
    }
    const auto& names = choice.tunings;
    for (const Tuning* const tuning : document.objects().getTunings()) {
        if (isAll || std::find(names.begin(), names.end(), tuning->getName()) != names.end()) {
            for (const TuningRow& row : tuningRows()) {
                pictures.push_back(tuningPicture(*tuning, row));
            }
        }
    }
    return pictures;
}

bool isSame(const Curve& left, const Curve& right) {
    return left.name == right.name && left.places == right.places && left.values == right.values &&
           left.isOff == right.isOff && left.isOld == right.isOld;
}

bool isSame(const Picture& left, const Picture& right) {
    return left.kind == right.kind && left.flags == right.flags &&
           std::equal(left.curves.begin(), left.curves.end(), right.curves.begin(),
                      right.curves.end(),
                      [](const Curve& a, const Curve& b) { return isSame(a, b); });
}

/** Without those that have no curves. */
std::vector<Picture> merged(std::vector<Picture> pictures) {
    std::vector<Picture> all;
    for (Picture& picture : pictures) {
        if (picture.curves.empty()) {
            continue;
        }
        const auto same = std::find_if(all.begin(), all.end(), [&picture](const Picture& other) {
            return isSame(picture, other);
        });
        if (same == all.end()) {
            all.push_back(std::move(picture));
        } else {
            same->owners.push_back(picture.owners.front());
        }
    }
    return all;
}

void addOldCurves(const Picture& old, Picture& picture) {
    const size_t count = picture.curves.size();
    for (Curve curve : old.curves) {
        const auto end = picture.curves.begin() + static_cast<std::ptrdiff_t>(count);
        if (std::any_of(picture.curves.begin(), end,
                        [&curve](const Curve& now) { return isSame(now, curve); })) {
            continue;
        }
        const auto now = std::find_if(picture.curves.begin(), end, [&curve](const Curve& other) {
            return other.name == curve.name;
        });
        curve.style = now == end ? picture.curves.size() : now->style;
        curve.isOld = true;
        picture.curves.push_back(std::move(curve));
    }
    if (old.flags != picture.flags) {
        picture.flags += "; old: " + old.flags;
    }
}

}  // namespace

std::string titleOf(const Picture& picture) {
    return joined(picture.owners, ", ") + ": " + rowOf(picture.kind).title;
}

const char* valueName(Kind kind) {
    return rowOf(kind).valueName;
}

bool isOverFrequency(Kind kind) {
    return rowOf(kind).isOverFrequency;
}

std::vector<Picture> picturesOf(const LoadedDocument& document, const PictureChoice& choice) {
    return merged(allPictures(document, choice));
}

std::vector<Picture> picturesOf(const LoadedDocument& document, const LoadedDocument& old,
                                const PictureChoice& choice) {
    std::vector<Picture> pictures = allPictures(document, choice);
    for (const Picture& picture : allPictures(old, choice)) {
        const auto found =
                std::find_if(pictures.begin(), pictures.end(), [&picture](const Picture& other) {
                    return other.kind == picture.kind && other.owners == picture.owners;
                });
        if (found != pictures.end()) {
            addOldCurves(picture, *found);
        } else {
            pictures.push_back({picture.kind, picture.owners, "only in the old document", {}});
            addOldCurves(picture, pictures.back());
        }
    }
    return merged(std::move(pictures));
}

}  // namespace ormel::tools
