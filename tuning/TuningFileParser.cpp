#define LOG_TAG "TuningFileParser"

#include <ormel/TuningFileParser.h>

#include <log/log.h>
#include <ormel/VersionRules.h>

#include <cerrno>
#include <utility>

#include "model/NeverDestroyed.h"

namespace ormel {

namespace {

using Names = std::vector<std::string>;

/** Has nothing to initialise, so that it serves other files' static initialisation. */
SetterCollection setterCollection;

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

SetterCollection* const TuningFileParser::sSetterCollection = &setterCollection;

TuningFileParser::TuningFileParser()
    : mOwnIterator(new TagIterator(mBudget)), mIterator(*mOwnIterator) {}

TuningFileParser::TuningFileParser(std::unique_ptr<TagIterator> iterator)
    : mOwnIterator(std::move(iterator)), mIterator(*mOwnIterator) {
    mIterator.mBudget = &mBudget;
}

int TuningFileParser::setTuningFile(const std::string& path, bool fromMemory) {
    mBudget = {};
    if (mIterator.init(path, fromMemory) != 0) {
        mError = mIterator.getError();
        return -EINVAL;
    }
    const Header headerBefore = mHeader;
    mDocuments.emplace_back();
    parseTuningFile();
    mIterator.clearAll();
    mError = mBudget.describe();
    if (mBudget.isSpent()) {
        mHeader = headerBefore;
        mDocuments.pop_back();
        return -EINVAL;
    }
    mParsed = true;
    fillDeviceData();
    return 0;
}

std::vector<std::string> TuningFileParser::readAttributes(const std::vector<std::string>& names) {
    std::vector<std::string> texts;
    mIterator.parseNodeWithName(names, texts);
    texts.resize(names.size());
    return texts;
}

std::string TuningFileParser::readAttribute(const std::vector<std::string>& name) {
    std::vector<std::string>& texts = mIterator.getTextBuffer();
    texts.clear();
    mIterator.parseNodeWithName(name, texts);
    return texts.empty() ? std::string() : texts.front();
}

void TuningFileParser::parseTuningFile() {
    // Two passes, so that versions and settings are known before anything depends on them.
    mIterator.pushNode();
    for (; mIterator.isCurValid(); mIterator.next()) {
        const std::string_view name = mIterator.readName();
        if (name == "tool_version") {
            mHeader.toolVersion = parseVersion();
        } else if (name == "authorized_technologies") {
            parseAuthorizedTechnologies();
        } else if (name == "format_version") {
            mHeader.formatVersion = parseVersion();
            ALOGD("xml version: %s", mHeader.formatVersion.c_str());
            mBudget.chargeMessage(mHeader.formatVersion.size());
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
    static NeverDestroyed<Names> names(Names{"major", "minor", "maintenance"});
    const auto parts = readAttributes(*names);
    return parts[0] + "." + parts[1] + "." + parts[2];
}

void TuningFileParser::parseAuthorizedTechnologies() {
    if (const VersionRule* const rule = findRule(VersionRuleKind::SETTINGS_UNREAD)) {
        mHeader.virtualBassProcess = rule->value;
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
            mHeader.deviceName = readAttribute({name});
            ALOGD("%s, mDeviceName = %s", kCaller, mHeader.deviceName.c_str());
            mBudget.chargeMessage(mHeader.deviceName.size());
        } else if (name == "device_index") {
            mHeader.deviceIndex = string2Int(readAttribute({name}));
            ALOGD("%s, mDeviceIndex = %d", kCaller, mHeader.deviceIndex);
            mBudget.chargeMessage(0);
        } else if (name == "tuning_version") {
            mHeader.tuningVersion = string2Int(readAttribute({name}));
            ALOGD("%s, mTuningVersion = %d", kCaller, mHeader.tuningVersion);
            mBudget.chargeMessage(0);
        } else if (name == "virtual_bass_process") {
            mHeader.virtualBassProcess = string2Int(readAttribute({name}));
        } else if (name == "altivo_game_system_gain") {
            mHeader.gameSystemGain = string2Int(readAttribute({name}));
        }
    }
}

const VersionRule* TuningFileParser::findRule(VersionRuleKind kind) const {
    return findVersionRule(mHeader.formatVersion, kind);
}

bool TuningFileParser::presetsAreNamed() const {
    return findRule(VersionRuleKind::IEQ_PRESETS_NAMED) != nullptr;
}

void TuningFileParser::applyVersionRules(ParameterOwner owner, ParameterValues& object,
                                         const ProfileIeq& ieq) {
    for (const VersionRule& rule : kVersionRules) {
        if (rule.owner != owner || !rule.holdsFor(mHeader.formatVersion)) {
            continue;
        }
        const int profilesValue = rule.param == IEQ_ENABLE ? ieq.enable : ieq.amount;
        const bool isProfiles = rule.kind == VersionRuleKind::PROFILES_VALUE;
        setParameter(rule.param, isProfiles ? profilesValue : rule.value, object);
    }
}

int TuningFileParser::getIeqPresetIdByName(const std::string& name) {
    for (size_t id = 0; id < kIeqPresetCount; ++id) {
        if (name == kIeqPresetNames[id]) {
            return static_cast<int>(id);
        }
    }
    ALOGE("name is invalid, %d", 313);
    mBudget.chargeMessage(0);
    return 0;
}

void TuningFileParser::parsePreset() {
    static NeverDestroyed<Names> names(Names{"id", "name", "type"});
    const auto attributes = readAttributes(*names);
    const std::string& id = attributes[0];
    const std::string& type = attributes[2];
    Objects& objects = mDocuments.back();
    if (type == "ieq") {
        const int presetId = presetsAreNamed() ? getIeqPresetIdByName(id) : string2Int(id);
        IeqPreset preset(presetId, presetsAreNamed() ? kIeqPresetNames[presetId] : attributes[1]);
        mBudget.chargeObject();
        mBudget.chargeKeptText(attributes[1].size());
        readParameter("ieq", preset);
        objects.ieqPresets.push_back(std::move(preset));
    } else if (type == "geq") {
        GeqPreset preset(string2Int(id));
        mBudget.chargeObject();
        readParameter("geq", preset);
        objects.geqPresets.push_back(std::move(preset));
    }
}

bool TuningFileParser::readParameter(std::string_view name, ParameterValues& values) {
    // Every other node of an indented document, and no parameter's name.
    if (name == "text") {
        return false;
    }
    ValueSetter* const setter = setterCollection.getValueSetter(name);
    if (setter == nullptr) {
        return false;
    }
    const size_t before = values.getSetCount();
    setter->set(values, mIterator);
    mBudget.chargeEntries(setter->getParamCount());
    mBudget.chargeNumbers(values.getSetCount() - before);
    return true;
}

void TuningFileParser::setParameter(Parameter param, int value, ParameterValues& values) {
    values.set(param, {value});
    mBudget.chargeEntries(1);
    mBudget.chargeNumbers(1);
}

void TuningFileParser::parseProfile() {
    ++mHeader.profileCount;
    ProfileIeq ieq;
    if (findRule(VersionRuleKind::INCLUDE_IN_PROFILE) != nullptr) {
        ieq.presetId = parseProfileInclude();
    }

    mIterator.pushNode();
    static NeverDestroyed<Names> names(Names{"id", "name", "group"});
    const auto attributes = readAttributes(*names);
    const int id = string2Int(attributes[0]);
    const std::string& name = attributes[1];
    const bool mobility =
            attributes[2] == "mobility" && findRule(VersionRuleKind::GROUP_UNREAD) == nullptr;
    mIterator.childrenNext();
    mHeader.profileNames[id] = name;
    Profile profile(id, name, mobility);
    mBudget.chargeEntries(1);
    mBudget.chargeObject();
    mBudget.chargeKeptText(2 * name.size());

    // The two IEQ settings are the endpoints', and reach those that come after them.
    for (; mIterator.isCurValid(); mIterator.next()) {
        const std::string_view child = mIterator.readName();
        if (child == "ieq-enable") {
            ieq.enable = NodeParseUtils::parseValue(mIterator);
        } else if (child == "ieq-amount") {
            ieq.amount = NodeParseUtils::parseValue(mIterator);
        } else if (!readParameter(child, profile) && child == "endpoint_type") {
            parseProfileEndpoint(id, ieq);
        }
    }
    mIterator.popNode();

    applyVersionRules(ParameterOwner::PROFILE, profile, ieq);
    mDocuments.back().profiles.push_back(std::move(profile));
}

int TuningFileParser::parseProfileInclude() {
    ALOGD("%s(): parse the ieq preset", "parseProfile");
    mBudget.chargeMessage(0);
    mIterator.pushNode();
    mIterator.childrenNext();
    mIterator.next();
    mIterator.next();
    std::string presetName;
    if (mIterator.isCurValid() && mIterator.readName() == "include") {
        presetName = readAttribute({"preset"});
    }
    mIterator.popNode();
    return getIeqPresetIdByName(presetName);
}

void TuningFileParser::parseProfileEndpoint(int profileId, const ProfileIeq& ieq) {
    mIterator.pushNode();
    static NeverDestroyed<Names> names(Names{"id"});
    const std::string id = readAttribute(*names);
    int ieqPresetId = ieq.presetId;
    if (findRule(VersionRuleKind::INCLUDE_IN_PROFILE) == nullptr) {
        ALOGD("%s(): %s, parse the include ieq preset", __func__, id.c_str());
        mBudget.chargeMessage(id.size());
        ieqPresetId = parseEndpointInclude();
    }
    ProfileEndpoint endpoint(profileId, profileEndpointFromId(id), ieqPresetId);
    mBudget.chargeObject();
    mIterator.childrenNext();
    for (; mIterator.isCurValid(); mIterator.next()) {
        readParameter(mIterator.readName(), endpoint);
    }
    mIterator.popNode();
    completeProfileEndpoint(endpoint, ieq);
    mDocuments.back().profileEndpoints.push_back(std::move(endpoint));
}

int TuningFileParser::parseEndpointInclude() {
    int presetId = 0;
    mIterator.pushNode();
    mIterator.childrenNext();
    if (mIterator.isCurValid() && mIterator.readName() == "include") {
        presetId = presetsAreNamed() ? getIeqPresetIdByName(readAttribute({"preset"}))
                                     : string2Int(readAttribute({"ieq_preset"}));
    }
    mIterator.popNode();
    return presetId;
}

void TuningFileParser::completeProfileEndpoint(ProfileEndpoint& endpoint, const ProfileIeq& ieq) {
    // The lookups leave empty lists behind.
    auto& values = endpoint.getValues();
    mBudget.chargeEntries(2);
    if (values[MI_DIALOG_ENHANCER_STEERING_ENABLE].empty()) {
        const std::vector<int>& dialogEnhancerEnable = values[DIALOG_ENHANCER_ENABLE];
        if (!dialogEnhancerEnable.empty()) {
            setParameter(MI_DIALOG_ENHANCER_STEERING_ENABLE, dialogEnhancerEnable.front(),
                         endpoint);
        }
    }
    applyVersionRules(ParameterOwner::PROFILE_ENDPOINT, endpoint, ieq);
    setParameter(VIRTUAL_BASS_TYPE, mHeader.virtualBassProcess, endpoint);
}

void TuningFileParser::parseTuning() {
    mIterator.pushNode();
    static NeverDestroyed<Names> names(
            Names{"name", "endpoint_type", "mono_device", "orientation", "output_channels"});
    const auto attributes = readAttributes(*names);
    const std::string& name = attributes[0];
    Tuning tuning(name, tuningEndpointFromType(attributes[1]), attributes[2] == "true");
    mBudget.chargeObject();
    mBudget.chargeKeptText(name.size());
    setParameter(ORIENTATION, string2Int(attributes[3]), tuning);
    setParameter(OUTPUT_CHANNELS, string2Int(attributes[4]), tuning);

    mIterator.childrenNext();
    parseDeviceTunings(name);
    if (mBudget.isSpent()) {
        return;
    }
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

    applyVersionRules(ParameterOwner::TUNING, tuning, {});
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
    static NeverDestroyed<Names> names(Names{"id", "endpoint_port"});
    const auto attributes = readAttributes(*names);
    mBudget.chargeObject();
    mBudget.chargeKeptText(attributes[0].size() + attributes[1].size() + tuningName.size());
    if (!mBudget.isSpent()) {
        mDocuments.back().deviceTunings.emplace_back(attributes[0], attributes[1], tuningName);
    }
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
    mDeviceData->setFormatVersion(mHeader.formatVersion);
    mDeviceData->setToolVersion(mHeader.toolVersion);
    mDeviceData->setDeviceName(mHeader.deviceName);
    mDeviceData->setDeviceIndex(mHeader.deviceIndex);
    mDeviceData->setTuningVersion(mHeader.tuningVersion);
    mDeviceData->setIeqPresets(pointersTo(&Objects::ieqPresets));
    mDeviceData->setGeqPresets(pointersTo(&Objects::geqPresets));
    mDeviceData->setProfiles(pointersTo(&Objects::profiles));
    mDeviceData->setProfileEndPoints(pointersTo(&Objects::profileEndpoints));
    mDeviceData->setTunings(pointersTo(&Objects::tunings));
    mDeviceData->setDeviceTunings(pointersTo(&Objects::deviceTunings));
    mDeviceData->setAltivoGameSystemGain(mHeader.gameSystemGain);
}

}  // namespace ormel
