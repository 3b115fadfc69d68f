#define LOG_TAG "TuningFileParser"

#include <ormel/TuningFileParser.h>

#include <log/log.h>

#include <cerrno>
#include <utility>

namespace ormel {

namespace {

/** Made on first use, which may be before this file's static initialisation. */
SetterCollection& setterCollection() {
    static auto& collection = *new SetterCollection;
    return collection;
}

bool hasPrefix(const std::string& version, std::string_view prefix) {
    return version.compare(0, prefix.size(), prefix) == 0;
}

/**
 * Whether the version's first characters sort below those of @p prefix. Versions are compared as
 * bytes: "3.10.0" is below "3.4.", and an absent version is below everything.
 */
bool isBelow(const std::string& version, std::string_view prefix) {
    return version.compare(0, prefix.size(), prefix) < 0;
}

/** Reads attributes of the current node by name; those that are not there are empty. */
std::vector<std::string> readAttributes(TagIterator& iterator,
                                        const std::vector<std::string>& names) {
    const std::vector<std::string_view>& read = iterator.readTexts(names);
    std::vector<std::string> texts(read.begin(), read.end());
    texts.resize(names.size());
    return texts;
}

Endpoint profileEndpointFromId(const std::string& id) {
    if (id == kEndpointNames[ENDPOINT_HEADPHONE]) {
        return ENDPOINT_HEADPHONE;
    }
    return id == kEndpointNames[ENDPOINT_SPEAKER] ? ENDPOINT_SPEAKER : ENDPOINT_OTHER;
}

Endpoint tuningEndpointFromType(const std::string& type) {
    if (type == kEndpointNames[ENDPOINT_HEADPHONE]) {
        return ENDPOINT_HEADPHONE;
    }
    return type == kEndpointNames[ENDPOINT_OTHER] ? ENDPOINT_OTHER : ENDPOINT_SPEAKER;
}

}  // namespace

SetterCollection* const TuningFileParser::sSetterCollection = &setterCollection();

TuningFileParser::TuningFileParser(std::unique_ptr<TagIterator> iterator)
    : mOwnIterator(std::move(iterator)), mIterator(*mOwnIterator) {}

int TuningFileParser::setTuningFile(const std::string& path, bool fromMemory) {
    if (mIterator.init(path, fromMemory) != 0) {
        return -EINVAL;
    }
    mDocuments.emplace_back();
    mTuningNameBytes = 0;
    mValueCount = 0;
    parseTuningFile();
    if (isTooLarge()) {
        ALOGE("Too much to read, %zu values and %zu bytes of tuning names", mValueCount,
              mTuningNameBytes);
    }
    const bool complete = !mIterator.isExhausted() && !isTooLarge();
    if (!complete) {
        mIterator.clearAll();
        mDocuments.pop_back();
        return -EINVAL;
    }
    mParsed = true;
    fillDeviceData();
    return 0;
}

void TuningFileParser::parseTuningFile() {
    // Two passes, so that versions and settings are known before anything depends on them.
    mIterator.pushNode();
    for (; mIterator.isCurValid(); mIterator.next()) {
        const std::string_view name = mIterator.readName();
        if (name == "tool_version") {
            mToolVersion = parseVersion();
        } else if (name == "authorized_technologies") {
            parseAuthorizedTechnologies();
        } else if (name == "format_version") {
            mFormatVersion = parseVersion();
            ALOGD("xml version: %s", mFormatVersion.c_str());
        }
    }
    mIterator.popNode();
    for (; mIterator.isCurValid(); mIterator.next()) {
        const std::string_view name = mIterator.readName();
        if (name == "profile") {
            parseProfile();
        } else if (name == "preset") {
            parsePreset();
        } else if (name == "tuning") {
            parseTuning();
        }
    }
}

std::string TuningFileParser::parseVersion() {
    const auto parts = readAttributes(mIterator, {"major", "minor", "maintenance"});
    return parts[0] + "." + parts[1] + "." + parts[2];
}

void TuningFileParser::parseAuthorizedTechnologies() {
    if (hasPrefix(mFormatVersion, "3.2.")) {
        mVirtualBassProcess = 2;
        return;
    }
    mIterator.pushNode();
    mIterator.childrenNext();
    for (; mIterator.isCurValid(); mIterator.next()) {
        if (mIterator.readName() == "global_setting") {
            parseGlobalSetting();
        }
    }
    mIterator.popNode();
}

void TuningFileParser::parseGlobalSetting() {
    constexpr char kCaller[] = "parseAuthorizedTechnologies";
    for (const std::string& name : mIterator.getAttrsName()) {
        if (name == "device_name") {
            mDeviceName = mIterator.readText(name.c_str());
            ALOGD("%s, mDeviceName = %s", kCaller, mDeviceName.c_str());
        } else if (name == "device_index") {
            mDeviceIndex = string2Int(mIterator.readText(name.c_str()));
            ALOGD("%s, mDeviceIndex = %d", kCaller, mDeviceIndex);
        } else if (name == "tuning_version") {
            mTuningVersion = string2Int(mIterator.readText(name.c_str()));
            ALOGD("%s, mTuningVersion = %d", kCaller, mTuningVersion);
        } else if (name == "virtual_bass_process") {
            mVirtualBassProcess = string2Int(mIterator.readText(name.c_str()));
        } else if (name == "altivo_game_system_gain") {
            mGameSystemGain = string2Int(mIterator.readText(name.c_str()));
        }
    }
}

bool TuningFileParser::presetsAreNamed() const {
    return hasPrefix(mFormatVersion, "3.2.") || hasPrefix(mFormatVersion, "3.3.0");
}

int TuningFileParser::getIeqPresetIdByName(const std::string& name) {
    for (size_t id = 0; id < kIeqPresetCount; ++id) {
        if (name == kIeqPresetNames[id]) {
            return static_cast<int>(id);
        }
    }
    ALOGE("name is invalid, %d", 313);
    return 0;
}

void TuningFileParser::parsePreset() {
    const auto attributes = readAttributes(mIterator, {"id", "name", "type"});
    const std::string& id = attributes[0];
    const std::string& type = attributes[2];
    Objects& objects = mDocuments.back();
    if (type == "ieq") {
        const int presetId = presetsAreNamed() ? getIeqPresetIdByName(id) : string2Int(id);
        IeqPreset preset(presetId, presetsAreNamed() ? kIeqPresetNames[presetId] : attributes[1]);
        readParameter("ieq", preset);
        objects.ieqPresets.push_back(std::move(preset));
    } else if (type == "geq") {
        GeqPreset preset(string2Int(id));
        readParameter("geq", preset);
        objects.geqPresets.push_back(std::move(preset));
    }
}

bool TuningFileParser::readParameter(std::string_view name, ParameterValues& values) {
    // Every other node of an indented document, and no parameter's name.
    if (name == "text") {
        return false;
    }
    const ValueSetter* const setter = setterCollection().getValueSetter(name);
    if (setter == nullptr) {
        return false;
    }
    if (!isTooLarge()) {
        const size_t before = values.getSetCount();
        setter->set(values, mIterator);
        mValueCount += values.getSetCount() - before;
    }
    return true;
}

bool TuningFileParser::isTooLarge() const {
    return mTuningNameBytes > kMaxTuningNameBytes || mValueCount > kMaxValues;
}

void TuningFileParser::parseProfile() {
    ++mProfileCount;
    const bool isFormat32 = hasPrefix(mFormatVersion, "3.2.");
    const int defaultIeqPresetId = isFormat32 ? parseProfileInclude() : 0;

    mIterator.pushNode();
    const auto attributes = readAttributes(mIterator, {"id", "name", "group"});
    const int id = string2Int(attributes[0]);
    const std::string& name = attributes[1];
    const bool mobility = !isFormat32 && attributes[2] == "mobility";
    mIterator.childrenNext();
    mProfileNames[id] = name;
    Profile profile(id, name, mobility);

    // The two IEQ settings are the endpoints', and reach those that come after them.
    int ieqEnable = 0;
    int ieqAmount = 0;
    for (; mIterator.isCurValid(); mIterator.next()) {
        const std::string_view child = mIterator.readName();
        if (child == "ieq-enable") {
            ieqEnable = NodeParseUtils::parseValue(mIterator);
        } else if (child == "ieq-amount") {
            ieqAmount = NodeParseUtils::parseValue(mIterator);
        } else if (!readParameter(child, profile) && child == "endpoint_type") {
            parseProfileEndpoint(id, ieqEnable, ieqAmount, defaultIeqPresetId);
        }
    }
    mIterator.popNode();

    if (isFormat32) {
        profile.set(REVERB_SUPPRESSION_ENABLE, {0});
        profile.set(REVERB_SUPPRESSION_AMOUNT, {0});
    }
    if (isBelow(mFormatVersion, "3.4.")) {
        profile.set(HEADPHONE_VIRTUALIZER_MODE, {1});
    }
    mDocuments.back().profiles.push_back(std::move(profile));
}

int TuningFileParser::parseProfileInclude() {
    ALOGD("%s(): parse the ieq preset", "parseProfile");
    mIterator.pushNode();
    mIterator.childrenNext();
    mIterator.next();
    mIterator.next();
    std::string presetName;
    if (mIterator.readName() == "include") {
        presetName = mIterator.readText("preset");
    }
    mIterator.popNode();
    return getIeqPresetIdByName(presetName);
}

void TuningFileParser::parseProfileEndpoint(int profileId, int ieqEnable, int ieqAmount,
                                            int defaultIeqPresetId) {
    mIterator.pushNode();
    const std::string id(mIterator.readText("id"));
    int ieqPresetId = defaultIeqPresetId;
    if (!hasPrefix(mFormatVersion, "3.2.")) {
        ALOGD("%s(): %s, parse the include ieq preset", __func__, id.c_str());
        ieqPresetId = parseEndpointInclude(defaultIeqPresetId);
    }
    ProfileEndpoint endpoint(profileId, profileEndpointFromId(id), ieqPresetId);
    mIterator.childrenNext();
    for (; mIterator.isCurValid(); mIterator.next()) {
        readParameter(mIterator.readName(), endpoint);
    }
    mIterator.popNode();
    completeProfileEndpoint(endpoint, ieqEnable, ieqAmount);
    mDocuments.back().profileEndpoints.push_back(std::move(endpoint));
}

int TuningFileParser::parseEndpointInclude(int defaultIeqPresetId) {
    int presetId = defaultIeqPresetId;
    mIterator.pushNode();
    mIterator.childrenNext();
    if (mIterator.readName() == "include") {
        presetId = presetsAreNamed()
                           ? getIeqPresetIdByName(std::string(mIterator.readText("preset")))
                           : string2Int(mIterator.readText("ieq_preset"));
    }
    mIterator.popNode();
    return presetId;
}

void TuningFileParser::completeProfileEndpoint(ProfileEndpoint& endpoint, int ieqEnable,
                                               int ieqAmount) {
    auto& values = endpoint.getValues();
    if (values[MI_DIALOG_ENHANCER_STEERING_ENABLE].empty()) {
        const std::vector<int>& dialogEnhancerEnable = values[DIALOG_ENHANCER_ENABLE];
        if (!dialogEnhancerEnable.empty()) {
            endpoint.set(MI_DIALOG_ENHANCER_STEERING_ENABLE, {dialogEnhancerEnable.front()});
        }
    }
    if (hasPrefix(mFormatVersion, "3.2.")) {
        endpoint.set(IEQ_ENABLE, {ieqEnable});
        endpoint.set(IEQ_AMOUNT, {ieqAmount});
        if (hasPrefix(mFormatVersion, "3.2.2")) {
            endpoint.set(HEARING_PROTECTION_ENABLE, {0});
            endpoint.set(VIRTUALIZER_START_BAND, {0});
        }
        endpoint.set(HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE, {4});
    }
    endpoint.set(VIRTUAL_BASS_TYPE, {mVirtualBassProcess});
}

void TuningFileParser::parseTuning() {
    mIterator.pushNode();
    const auto attributes = readAttributes(
            mIterator, {"name", "endpoint_type", "mono_device", "orientation", "output_channels"});
    const std::string& name = attributes[0];
    Tuning tuning(name, tuningEndpointFromType(attributes[1]), attributes[2] == "true");
    tuning.set(ORIENTATION, {string2Int(attributes[3])});
    tuning.set(OUTPUT_CHANNELS, {string2Int(attributes[4])});

    mIterator.childrenNext();
    parseDeviceTunings(name);
    if (!mIterator.isCurValid()) {
        // The position is not restored: a tuning without data ends the walk over the document.
        ALOGE("There is no <data> in Tuning section");
        return;
    }
    mIterator.childrenNext();
    for (; mIterator.isCurValid(); mIterator.next()) {
        if (mIterator.isElementNode()) {
            readParameter(mIterator.readName(), tuning);
        }
    }
    mIterator.popNode();

    if (hasPrefix(mFormatVersion, "3.2.2")) {
        tuning.set(BASS_MBDRC_ENABLE, {0});
    }
    if (isBelow(mFormatVersion, "3.4.")) {
        tuning.set(SPEAKER_VIRTUALIZER_MODE, {1});
    }
    mDocuments.back().tunings.push_back(std::move(tuning));
}

void TuningFileParser::parseDeviceTunings(const std::string& tuningName) {
    for (; mIterator.isCurValid(); mIterator.next()) {
        if (!mIterator.isElementNode()) {
            continue;
        }
        if (mIterator.readName() != "device_id") {
            return;
        }
        parseDeviceTuning(tuningName);
    }
}

void TuningFileParser::parseDeviceTuning(const std::string& tuningName) {
    mTuningNameBytes += tuningName.size();
    if (isTooLarge()) {
        return;
    }
    const auto attributes = readAttributes(mIterator, {"id", "endpoint_port"});
    mDocuments.back().deviceTunings.emplace_back(attributes[0], attributes[1], tuningName);
}

template <typename Object>
std::set<Object*> TuningFileParser::pointersTo(std::vector<Object> Objects::*kind) {
    std::set<Object*> pointers;
    for (Objects& objects : mDocuments) {
        for (Object& object : objects.*kind) {
            pointers.insert(pointers.end(), &object);
        }
    }
    return pointers;
}

void TuningFileParser::fillDeviceData() {
    mDeviceData = std::make_unique<DeviceData>();
    mDeviceData->setFormatVersion(mFormatVersion);
    mDeviceData->setToolVersion(mToolVersion);
    mDeviceData->setDeviceName(mDeviceName);
    mDeviceData->setDeviceIndex(mDeviceIndex);
    mDeviceData->setTuningVersion(mTuningVersion);
    mDeviceData->setIeqPresets(pointersTo(&Objects::ieqPresets));
    mDeviceData->setGeqPresets(pointersTo(&Objects::geqPresets));
    mDeviceData->setProfiles(pointersTo(&Objects::profiles));
    mDeviceData->setProfileEndPoints(pointersTo(&Objects::profileEndpoints));
    mDeviceData->setTunings(pointersTo(&Objects::tunings));
    mDeviceData->setDeviceTunings(pointersTo(&Objects::deviceTunings));
    mDeviceData->setAltivoGameSystemGain(mGameSystemGain);
}

}  // namespace ormel
