// Plain reading of a tuning document's objects from libxml2's tree. The fuzz targets load its
// result, so it takes no shortcuts and shares only the model's classes.
#pragma once

#include <ormel/DeviceTuning.h>
#include <ormel/GeqPreset.h>
#include <ormel/IeqPreset.h>
#include <ormel/Profile.h>
#include <ormel/ProfileEndpoint.h>
#include <ormel/Tuning.h>

#include <algorithm>
#include <deque>
#include <locale>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Fuzz.h"
#include "PlainList.h"
#include "PlainStore.h"
#include "PlainXml.h"

namespace ormel::fuzz {

using Texts = std::vector<std::string>;

/** A document's content: the objects of each kind in document order. */
struct PlainDocument {
    std::string formatVersion;
    std::string toolVersion;
    std::string deviceName;
    int32_t deviceIndex = -1;
    int32_t tuningVersion = -1;
    int32_t virtualBassProcess = 1;
    int32_t gameSystemGain = 0;
    std::deque<IeqPreset> ieqPresets;
    std::deque<GeqPreset> geqPresets;
    std::deque<Profile> profiles;
    std::deque<ProfileEndpoint> profileEndpoints;
    std::deque<Tuning> tunings;
    std::deque<DeviceTuning> deviceTunings;
};

inline std::istringstream streamOf(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    return stream;
}

/** The number at the start of the text; 0 if there is none, the nearest limit if out of range. */
inline int32_t plainNumber(const std::string& text) {
    int32_t number = 0;
    streamOf(text) >> number;
    return number;
}

/** The numbers up to the first that fails. After each, one comma or blank is skipped. */
inline Words plainRow(const std::string& text) {
    Words row;
    std::istringstream stream = streamOf(text);
    for (int32_t number = 0; stream >> number;) {
        row.push_back(number);
        if (stream.peek() == ',' || stream.peek() == ' ') {
            stream.ignore();
        }
    }
    return row;
}

/** A position in a tree; copies move independently. */
class PlainCursor {
  public:
    explicit PlainCursor(const xmlNode* node) : mNode(node) {}

    bool isValid() const { return mNode != nullptr; }
    bool isElement() const { return isValid() && mNode->type == XML_ELEMENT_NODE; }
    std::string name() const { return isValid() ? std::string(toText(mNode->name)) : ""; }
    bool isLeaf() const { return !isValid() || !hasChildren(mNode); }

    void next() { mNode = isValid() ? mNode->next : nullptr; }

    /** Moves to the second child; stays on a leaf. */
    void descend() {
        if (!isLeaf()) {
            mNode = mNode->children->next;
        }
    }

    PlainCursor below(int levels = 1) const {
        PlainCursor cursor = *this;
        for (; levels > 0; --levels) {
            cursor.descend();
        }
        return cursor;
    }

    /** Names and texts of an element's attributes. */
    std::vector<std::pair<std::string, std::string>> attributes() const {
        std::vector<std::pair<std::string, std::string>> all;
        for (const xmlAttr* attr = isElement() ? mNode->properties : nullptr; attr != nullptr;
             attr = attr->next) {
            all.emplace_back(toText(attr->name), textOf(mNode, attr));
        }
        return all;
    }

    /** The texts of these attributes; empty for missing ones. */
    Texts texts(const Texts& names) const {
        Texts found(names.size());
        for (const auto& [name, text] : attributes()) {
            for (size_t i = 0; i < names.size(); ++i) {
                if (names[i] == name) {
                    found[i] = text;
                }
            }
        }
        return found;
    }

    std::string text(const std::string& name) const { return texts({name}).front(); }

    /** The row in the first attribute. */
    Words row() const {
        const auto all = attributes();
        return all.empty() ? Words{} : plainRow(all.front().second);
    }

  private:
    const xmlNode* mNode;
};

inline int32_t plainValue(const PlainCursor& at) {
    const std::string text = at.text("value");
    return text == "true" ? 1 : plainNumber(text);
}

/** The parameters that each element gives, and how. */
class PlainParameters {
  public:
    explicit PlainParameters(PlainStore& store) : mStore(store) {}

    /** Reads the element into the object if it is a parameter element. */
    void read(const std::string& name, const PlainCursor& at, ParameterValues& object) {
        if (name == "ieq") {
            readPreset(at, {"frequency", "target"}, true, {IEQ_FREQUENCY, IEQ_TARGET}, object);
        } else if (name == "geq") {
            readPreset(at, {"frequency", "gain"}, false, {GEQ_FREQUENCY, GEQ_GAIN}, object);
        } else if (name == "audio-optimizer-bands") {
            readBands(at,
                      {"frequency", "gain_left", "gain_right", "gain_left_surround",
                       "gain_right_surround"},
                      {AUDIO_OPTIMIZER_FREQUENCY, AUDIO_OPTIMIZER_GAIN_L, AUDIO_OPTIMIZER_GAIN_R,
                       AUDIO_OPTIMIZER_GAIN_LS, AUDIO_OPTIMIZER_GAIN_RS},
                      object);
        } else if (name == "regulator-tuning") {
            readBands(at, {"frequency", "threshold_low", "threshold_high", "isolated_band"},
                      {REGULATOR_FREQUENCY, REGULATOR_THRESHOLD_LOW, REGULATOR_THRESHOLD_HIGH,
                       REGULATOR_ISOLATED_BAND},
                      object);
        } else if (name == "virtual-bass-src-freqs") {
            readRange(at, VIRTUAL_BASS_SRC_FREQ_LOW, VIRTUAL_BASS_SRC_FREQ_HIGH, object);
        } else if (name == "virtual-bass-mix-freqs") {
            readRange(at, VIRTUAL_BASS_MIX_FREQ_LOW, VIRTUAL_BASS_MIX_FREQ_HIGH, object);
        } else if (name == "virtual-bass-subgains") {
            object.set(VIRTUAL_BASS_SUBGAINS, subgains(at));
        } else if (name == "output-mode") {
            object.set(OUTPUT_MIX_MATRIX, matrix(at));
        } else if (name == "drc-metadata") {
            const Words row = at.row();
            object.set(CUSTOM_DRC_METADATA, row.empty() ? Words{0} : row);
        } else if (const auto found = rows().find(name); found != rows().end()) {
            object.set(found->second, at.row());
        } else if (const auto simple = values().find(name); simple != values().end()) {
            object.set(simple->second, {plainValue(at)});
        }
    }

  private:
    using ByName = std::map<std::string, Parameter>;

    static void putAll(const std::vector<Parameter>& params, const std::vector<Words>& columns,
                       ParameterValues& object) {
        for (size_t i = 0; i < params.size(); ++i) {
            object.set(params[i], columns[i]);
        }
    }

    /** Bands three levels below; every column is one row of text. */
    void readPreset(const PlainCursor& preset, const Texts& names, bool isNamed,
                    const std::vector<Parameter>& params, ParameterValues& object) {
        Texts columns(names.size());
        for (PlainCursor at = preset.below(3); at.isValid(); at.next()) {
            if (!at.isElement()) {
                continue;
            }
            if (isNamed && at.name() != "band_ieq") {
                mStore.log(4, "No attribute band_ieq was found!");
                break;
            }
            const Texts texts = at.texts(names);
            for (size_t i = 0; i < names.size(); ++i) {
                columns[i] += texts[i] + ",";
            }
        }
        std::vector<Words> numbers;
        std::transform(columns.begin(), columns.end(), std::back_inserter(numbers), plainRow);
        putAll(params, numbers, object);
    }

    /** Bands one level below; each attribute is a number, or tells whether the band is isolated. */
    static void readBands(const PlainCursor& element, const Texts& names,
                          const std::vector<Parameter>& params, ParameterValues& object) {
        std::vector<Words> columns(names.size());
        for (PlainCursor at = element.below(); at.isValid(); at.next()) {
            const Texts texts = at.texts(names);
            for (size_t i = 0; at.isElement() && i < names.size(); ++i) {
                const bool isFlag = names[i] == "isolated_band";
                columns[i].push_back(isFlag ? (texts[i] == "true" ? 1 : 0) : plainNumber(texts[i]));
            }
        }
        putAll(params, columns, object);
    }

    static void readRange(const PlainCursor& at, Parameter low, Parameter high,
                          ParameterValues& object) {
        if (at.isElement()) {
            object.set(low, {plainNumber(at.text("frequency_low"))});
            object.set(high, {plainNumber(at.text("frequency_high"))});
        }
    }

    static Words subgains(const PlainCursor& at) {
        Words gains;
        for (const auto& [name, text] : at.attributes()) {
            gains.push_back(plainNumber(text));
        }
        return gains;
    }

    static Words matrix(const PlainCursor& element) {
        const PlainCursor rows = element.below();
        Words all;
        if (rows.isLeaf()) {
            return all;
        }
        for (PlainCursor at = rows.below(); at.isValid(); at.next()) {
            const Words row = at.row();
            all.insert(all.end(), row.begin(), row.end());
        }
        return all;
    }

    /** The elements with a row of numbers. */
    static const ByName& rows() {
        static const auto& all = *new ByName{
                {"advanced-headphone-virtualizer-rendering-config",
                 ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG},
                {"advanced-speaker-virtualizer-rendering-config",
                 ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG},
                {"bass-mbdrc-tuning", BASS_MBDRC_TUNING},
                {"complex-equalizer-tuning-left", COMPLEX_EQUALIZER_TUNING_LEFT},
                {"complex-equalizer-tuning-left-surround", COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND},
                {"complex-equalizer-tuning-right", COMPLEX_EQUALIZER_TUNING_RIGHT},
                {"complex-equalizer-tuning-right-surround",
                 COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND},
                {"regulator-sibilance-suppress-amounts-left",
                 REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT},
                {"regulator-sibilance-suppress-amounts-left-surround",
                 REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND},
                {"regulator-sibilance-suppress-amounts-right",
                 REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT},
                {"regulator-sibilance-suppress-amounts-right-surround",
                 REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND},
                {"regulator-stress-amount", REGULATOR_STRESS_AMOUNT},
                {"virtual-bass-compressor-tuning", VIRTUAL_BASS_COMPRESSOR_TUNING},
                {"virtual-bass-harmgains", VIRTUAL_BASS_HARMGAINS},
                {"virtual-bass-hybgains", VIRTUAL_BASS_HYBGAINS},
                {"virtual-bass-mix-frequency", VIRTUAL_BASS_MIX_FREQUENCY}};
        return all;
    }

    /** The elements with one value. All but one are named like their parameters. */
    static const ByName& values() {
        static const auto& all = *new ByName([] {
            ByName names = {{"virtual-bass-process-enable", VIRTUAL_BASS_ENABLE}};
            for (size_t i = 0; i < kParameterCount; ++i) {
                const auto param = static_cast<Parameter>(i);
                std::string name = kParameterNames[i];
                std::replace(name.begin(), name.end(), '_', '-');
                if (!hasNoSuchElement(param)) {
                    names.emplace(name, param);
                }
            }
            return names;
        }());
        return all;
    }

    static bool hasNoSuchElement(Parameter param) {
        static constexpr Parameter kOthers[] = {AUDIO_OPTIMIZER_FREQUENCY,
                                                AUDIO_OPTIMIZER_GAIN_L,
                                                AUDIO_OPTIMIZER_GAIN_LS,
                                                AUDIO_OPTIMIZER_GAIN_R,
                                                AUDIO_OPTIMIZER_GAIN_RS,
                                                CUSTOM_DRC_METADATA,
                                                GEQ_FREQUENCY,
                                                GEQ_GAIN,
                                                IEQ_FREQUENCY,
                                                IEQ_ID,
                                                IEQ_TARGET,
                                                ORIENTATION,
                                                OUTPUT_CHANNELS,
                                                OUTPUT_MIX_MATRIX,
                                                REGULATOR_FREQUENCY,
                                                REGULATOR_ISOLATED_BAND,
                                                REGULATOR_THRESHOLD_HIGH,
                                                REGULATOR_THRESHOLD_LOW,
                                                VIRTUAL_BASS_ENABLE,
                                                VIRTUAL_BASS_MIX_FREQ_LOW,
                                                VIRTUAL_BASS_MIX_FREQ_HIGH,
                                                VIRTUAL_BASS_SRC_FREQ_LOW,
                                                VIRTUAL_BASS_SRC_FREQ_HIGH,
                                                VIRTUAL_BASS_TYPE};
        return std::find(std::begin(kOthers), std::end(kOthers), param) != std::end(kOthers);
    }

    PlainStore& mStore;
};

/** Reads one document, and logs to a store what the library's parser logs. */
class PlainReading {
  public:
    PlainReading(const Tree& tree, PlainStore& store)
        : mFirst(rootOf(tree)->children), mStore(store), mParameters(store) {}

    PlainDocument read() {
        for (PlainCursor at = mFirst; at.isValid(); at.next()) {
            readHeader(at);
        }
        for (PlainCursor at = mFirst; at.isValid(); at.next()) {
            if (at.name() == "profile") {
                readProfile(at);
            } else if (at.name() == "preset") {
                readPreset(at);
            } else if (at.name() == "tuning" && !readTuning(at)) {
                break;
            }
        }
        return std::move(mDocument);
    }

  private:
    static constexpr const char* kPresetNames[] = {"off", "detailed", "balanced", "warm"};

    bool isVersion(const std::string& begin) const {
        return mDocument.formatVersion.compare(0, begin.size(), begin) == 0;
    }

    bool isBefore34() const { return mDocument.formatVersion.substr(0, 4) < "3.4."; }

    static std::string version(const PlainCursor& at) {
        return at.text("major") + "." + at.text("minor") + "." + at.text("maintenance");
    }

    void readHeader(const PlainCursor& at) {
        if (at.name() == "tool_version") {
            mDocument.toolVersion = version(at);
        } else if (at.name() == "authorized_technologies") {
            readSettings(at);
        } else if (at.name() == "format_version") {
            mDocument.formatVersion = version(at);
            mStore.log(3, "xml version: " + mDocument.formatVersion);
        }
    }

    void readSettings(const PlainCursor& element) {
        if (isVersion("3.2.")) {
            mDocument.virtualBassProcess = 2;
            return;
        }
        for (PlainCursor at = element.below(); at.isValid(); at.next()) {
            if (at.name() == "global_setting") {
                readSetting(at);
            }
        }
    }

    void readSetting(const PlainCursor& at) {
        for (const auto& [name, text] : at.attributes()) {
            const int32_t number = plainNumber(text);
            if (name == "device_name") {
                mDocument.deviceName = text;
                mStore.log(3, "parseAuthorizedTechnologies, mDeviceName = " + text);
            } else if (name == "device_index") {
                mDocument.deviceIndex = number;
                mStore.log(3,
                           "parseAuthorizedTechnologies, mDeviceIndex = " + std::to_string(number));
            } else if (name == "tuning_version") {
                mDocument.tuningVersion = number;
                mStore.log(3, "parseAuthorizedTechnologies, mTuningVersion = " +
                                      std::to_string(number));
            } else if (name == "virtual_bass_process") {
                mDocument.virtualBassProcess = number;
            } else if (name == "altivo_game_system_gain") {
                mDocument.gameSystemGain = number;
            }
        }
    }

    int32_t presetOfName(const std::string& name) {
        for (int32_t id = 0; id < 4; ++id) {
            if (name == kPresetNames[id]) {
                return id;
            }
        }
        mStore.log(6, "name is invalid, 313");
        return 0;
    }

    void readPreset(const PlainCursor& at) {
        const std::string type = at.text("type");
        const std::string id = at.text("id");
        if (type == "ieq") {
            const bool isNamed = isVersion("3.2.") || isVersion("3.3.0");
            const int32_t number = isNamed ? presetOfName(id) : plainNumber(id);
            const std::string name = isNamed ? kPresetNames[number] : at.text("name");
            mDocument.ieqPresets.emplace_back(number, name);
            mParameters.read("ieq", at, mDocument.ieqPresets.back());
        } else if (type == "geq") {
            mDocument.geqPresets.emplace_back(plainNumber(id));
            mParameters.read("geq", at, mDocument.geqPresets.back());
        }
    }

    /** The preset named in the fourth node of a profile, in formats 3.2. */
    int32_t presetOfProfile(const PlainCursor& profile) {
        mStore.log(3, "parseProfile(): parse the ieq preset");
        PlainCursor at = profile.below();
        at.next();
        at.next();
        return presetOfName(at.name() == "include" ? at.text("preset") : "");
    }

    void readProfile(const PlainCursor& element) {
        const int32_t preset = isVersion("3.2.") ? presetOfProfile(element) : 0;
        const bool isMobility = !isVersion("3.2.") && element.text("group") == "mobility";
        Profile profile(plainNumber(element.text("id")), element.text("name"), isMobility);
        int32_t enable = 0;
        int32_t amount = 0;
        for (PlainCursor at = element.below(); at.isValid(); at.next()) {
            if (at.name() == "ieq-enable") {
                enable = plainValue(at);
            } else if (at.name() == "ieq-amount") {
                amount = plainValue(at);
            } else if (at.name() == "endpoint_type") {
                readEndpoint(at, profile.getProfileId(), enable, amount, preset);
            } else {
                mParameters.read(at.name(), at, profile);
            }
        }
        if (isVersion("3.2.")) {
            profile.set(REVERB_SUPPRESSION_ENABLE, {0});
            profile.set(REVERB_SUPPRESSION_AMOUNT, {0});
        }
        if (isBefore34()) {
            profile.set(HEADPHONE_VIRTUALIZER_MODE, {1});
        }
        mDocument.profiles.push_back(profile);
    }

    void readEndpoint(const PlainCursor& element, int32_t profile, int32_t enable, int32_t amount,
                      int32_t preset) {
        const std::string id = element.text("id");
        if (!isVersion("3.2.")) {
            mStore.log(3, "parseProfileEndpoint(): " + id + ", parse the include ieq preset");
            if (const PlainCursor at = element.below(); at.name() == "include") {
                preset = isVersion("3.3.0") ? presetOfName(at.text("preset"))
                                            : plainNumber(at.text("ieq_preset"));
            }
        }
        const Endpoint kind = id == "headphone" ? ENDPOINT_HEADPHONE
                              : id == "speaker" ? ENDPOINT_SPEAKER
                                                : ENDPOINT_OTHER;
        ProfileEndpoint endpoint(profile, kind, preset);
        for (PlainCursor at = element.below(); at.isValid(); at.next()) {
            mParameters.read(at.name(), at, endpoint);
        }
        auto& values = endpoint.getValues();
        if (values[MI_DIALOG_ENHANCER_STEERING_ENABLE].empty() &&
            !values[DIALOG_ENHANCER_ENABLE].empty()) {
            values[MI_DIALOG_ENHANCER_STEERING_ENABLE] = {values[DIALOG_ENHANCER_ENABLE][0]};
        }
        if (isVersion("3.2.")) {
            values[IEQ_ENABLE] = {enable};
            values[IEQ_AMOUNT] = {amount};
            values[HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE] = {4};
        }
        if (isVersion("3.2.2")) {
            values[HEARING_PROTECTION_ENABLE] = {0};
            values[VIRTUALIZER_START_BAND] = {0};
        }
        values[VIRTUAL_BASS_TYPE] = {mDocument.virtualBassProcess};
        mDocument.profileEndpoints.push_back(endpoint);
    }

    /** @return false if the tuning has no data, which ends the reading */
    bool readTuning(const PlainCursor& element) {
        const std::string name = element.text("name");
        const std::string type = element.text("endpoint_type");
        const Endpoint kind = type == "headphone" ? ENDPOINT_HEADPHONE
                              : type == "other"   ? ENDPOINT_OTHER
                                                  : ENDPOINT_SPEAKER;
        Tuning tuning(name, kind, element.text("mono_device") == "true");
        tuning.set(ORIENTATION, {plainNumber(element.text("orientation"))});
        tuning.set(OUTPUT_CHANNELS, {plainNumber(element.text("output_channels"))});
        PlainCursor at = element.below();
        for (; at.isValid() && (!at.isElement() || at.name() == "device_id"); at.next()) {
            if (at.isElement()) {
                mDocument.deviceTunings.emplace_back(at.text("id"), at.text("endpoint_port"), name);
            }
        }
        if (!at.isValid()) {
            mStore.log(6, "There is no <data> in Tuning section");
            return false;
        }
        for (at.descend(); at.isValid(); at.next()) {
            if (at.isElement()) {
                mParameters.read(at.name(), at, tuning);
            }
        }
        if (isVersion("3.2.2")) {
            tuning.set(BASS_MBDRC_ENABLE, {0});
        }
        if (isBefore34()) {
            tuning.set(SPEAKER_VIRTUALIZER_MODE, {1});
        }
        mDocument.tunings.push_back(tuning);
        return true;
    }

    const PlainCursor mFirst;
    PlainStore& mStore;
    PlainParameters mParameters;
    PlainDocument mDocument;
};

}  // namespace ormel::fuzz
