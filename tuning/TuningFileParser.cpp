#define LOG_TAG "TuningFileParser"

#include <ormel/TuningFileParser.h>

#include <log/log.h>
#include <ormel/VersionRules.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <iterator>
#include <utility>

#include "model/NeverDestroyed.h"

namespace ormel {

namespace {

using Names = std::vector<std::string>;

/** Positions among the attributes of a global setting. */
enum Setting : size_t {
    DEVICE_NAME,
    DEVICE_INDEX,
    TUNING_VERSION,
    VIRTUAL_BASS_PROCESS,
    GAME_SYSTEM_GAIN
};

/** A profile's intelligent-equalizer settings for its endpoints. */
struct ProfileIeq {
    int presetId = 0;
    int enable = 0;
    int amount = 0;
};

/** Needs no initialisation, so other files may use it during theirs. */
SetterCollection setterCollection;

constexpr std::string_view nameOf(DocumentElement element) {
    return rowOf(element).name;
}

/** An element's attribute names, as iterators take them. */
const Names& attributesOf(DocumentElement element) {
    using AllNames = std::array<Names, std::size(kDocumentElements)>;
    static NeverDestroyed<AllNames> all([] {
        AllNames names;
        for (size_t i = 0; i < names.size(); ++i) {
            for (const char* const name : kDocumentElements[i].attributes) {
                if (name != nullptr) {
                    names[i].emplace_back(name);
                }
            }
        }
        return names;
    }());
    return (*all)[static_cast<size_t>(element)];
}

/** The setter of an element name; null if there is none. */
ValueSetter* findSetter(std::string_view name) {
    // Every other node of an indented document is text, which no setter reads.
    return name == "text" ? nullptr : setterCollection.getValueSetter(name);
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

// Hidden: used only here, so the library need not export its names.
class [[gnu::visibility("hidden")]] TuningFileParser::Reader {
  public:
    explicit Reader(TuningFileParser & parser)
        : mParser(parser),
          mIterator(parser.mIterator),
          mBudget(parser.mBudget),
          mHeader(parser.mHeader),
          mObjects(parser.mDocuments.back()),
          mObserver(parser.mObserver) {}

    /** Reads the document that the parser's iterator has loaded. */
    void read();

  private:
    std::string parseVersion(DocumentElement element);
    void parseAuthorizedTechnologies();
    void parseGlobalSetting();
    void parsePreset();
    void parseProfile();
    int parseProfileInclude();
    void parseProfileEndpoint(int profileId, const ProfileIeq& ieq);
    int parseEndpointInclude();
    void completeProfileEndpoint(ProfileEndpoint & endpoint, const ProfileIeq& ieq);
    void parseTuning();
    void parseDeviceTunings(const std::string& tuningName);
    void parseDeviceTuning(const std::string& tuningName);

    void readProfileParameter(const DocumentSection& section, ValueSetter& setter, Profile& profile,
                              ProfileIeq& ieq);
    void readParameter(const DocumentSection& section, ValueSetter& setter,
                       ParameterValues& values);
    void readParameterIfKnown(const DocumentSection& section, ParameterValues& values);
    void setParameter(Parameter param, int value, ParameterValues& values);
    std::vector<std::string> readAttributes(DocumentElement element);
    std::string readAttribute(const std::vector<std::string>& name);
    bool isOn(DocumentElement element);

    const VersionRule* findRule(VersionRuleKind kind) const;
    bool presetsAreNamed() const;
    /** Applies the format version's rules for a class to an object of it. */
    void applyVersionRules(ParameterOwner owner, ParameterValues & object, const ProfileIeq& ieq);

    // Calls to the observer, if there is one.
    uint32_t elementNumber() const;
    DocumentSection beginSection(DocumentElement kind, size_t object = 0);
    void enter(DocumentSection & section);
    void observeParameter(const DocumentSection& section, ValueSetter& setter);
    void passOver(const DocumentSection& section);
    void observeNoData(const DocumentSection& section);

    TuningFileParser& mParser;
    TagIterator& mIterator;
    DocumentBudget& mBudget;
    Header& mHeader;
    Objects& mObjects;
    TuningFileObserver* const mObserver;
};

SetterCollection* const TuningFileParser::sSetterCollection = &setterCollection;

TuningFileParser::TuningFileParser() : mIterator(mBudget) {}

int TuningFileParser::setTuningFile(const std::string& path, bool fromMemory) {
    mBudget = {};
    if (mIterator.init(path, fromMemory) != 0) {
        mError = mIterator.getError();
        return -EINVAL;
    }
    const Header headerBefore = mHeader;
    mDocuments.emplace_back();
    Reader(*this).read();
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

bool TuningFileParser::Reader::isOn(DocumentElement element) {
    return mIterator.isCurValid() && mIterator.readName() == nameOf(element);
}

uint32_t TuningFileParser::Reader::elementNumber() const {
    return mIterator.isOnElement() ? mIterator.getElementsBefore() : TuningFileObserver::kNoElement;
}

DocumentSection TuningFileParser::Reader::beginSection(DocumentElement kind, size_t object) {
    if (mObserver == nullptr) {
        return {};
    }
    const DocumentSection section = {kind, elementNumber(), object};
    mObserver->onSection(section);
    return section;
}

void TuningFileParser::Reader::enter(DocumentSection& section) {
    if (mObserver == nullptr) {
        mIterator.childrenNext();
        return;
    }
    const uint32_t before = elementNumber();
    mIterator.childrenNext();
    section.isChildless = section.isChildless || before == elementNumber();
}

void TuningFileParser::Reader::observeParameter(const DocumentSection& section,
                                                ValueSetter& setter) {
    if (mObserver != nullptr) {
        mObserver->onParameter(section, setter, elementNumber());
    }
}

void TuningFileParser::Reader::observeNoData(const DocumentSection& section) {
    if (mObserver != nullptr) {
        mObserver->onPassedOver(section.element, TuningFileObserver::Reason::NO_DATA);
    }
}

void TuningFileParser::Reader::passOver(const DocumentSection& section) {
    using Reason = TuningFileObserver::Reason;
    if (mObserver != nullptr && mIterator.isOnElement()) {
        mObserver->onPassedOver(elementNumber(),
                                section.isChildless ? Reason::UNEXPECTED_CHILD : Reason::UNKNOWN);
    }
}

std::vector<std::string> TuningFileParser::Reader::readAttributes(DocumentElement element) {
    const Names& names = attributesOf(element);
    std::vector<std::string> texts;
    mIterator.parseNodeWithName(names, texts);
    texts.resize(names.size());
    return texts;
}

std::string TuningFileParser::Reader::readAttribute(const std::vector<std::string>& name) {
    std::vector<std::string>& texts = mIterator.getTextBuffer();
    texts.clear();
    mIterator.parseNodeWithName(name, texts);
    return texts.empty() ? std::string() : texts.front();
}

void TuningFileParser::Reader::read() {
    // Two passes, so that versions and settings are known before anything depends on them.
    mIterator.pushNode();
    for (; mIterator.isCurValid(); mIterator.next()) {
        const std::string_view name = mIterator.readName();
        if (name == nameOf(DocumentElement::TOOL_VERSION)) {
            mHeader.toolVersion = parseVersion(DocumentElement::TOOL_VERSION);
        } else if (name == nameOf(DocumentElement::AUTHORIZED_TECHNOLOGIES)) {
            parseAuthorizedTechnologies();
        } else if (name == nameOf(DocumentElement::FORMAT_VERSION)) {
            mHeader.formatVersion = parseVersion(DocumentElement::FORMAT_VERSION);
            ALOGD("xml version: %s", mHeader.formatVersion.c_str());
            mBudget.chargeMessage(mHeader.formatVersion.size());
        }
    }
    mIterator.popNode();
    for (; mIterator.isCurValid(); mIterator.next()) {
        const std::string_view name = mIterator.readName();
        if (name == nameOf(DocumentElement::PROFILE)) {
            parseProfile();
        } else if (name == nameOf(DocumentElement::PRESET)) {
            parsePreset();
        } else if (name == nameOf(DocumentElement::TUNING)) {
            parseTuning();
        } else if (name != nameOf(DocumentElement::TOOL_VERSION) &&
                   name != nameOf(DocumentElement::AUTHORIZED_TECHNOLOGIES) &&
                   name != nameOf(DocumentElement::FORMAT_VERSION)) {
            passOver({});
        }
    }
}

std::string TuningFileParser::Reader::parseVersion(DocumentElement element) {
    beginSection(element);
    const auto parts = readAttributes(element);
    return parts[0] + "." + parts[1] + "." + parts[2];
}

void TuningFileParser::Reader::parseAuthorizedTechnologies() {
    if (const VersionRule* const rule = findRule(VersionRuleKind::SETTINGS_UNREAD)) {
        mHeader.virtualBassProcess = rule->value;
        return;
    }
    DocumentSection section = beginSection(DocumentElement::AUTHORIZED_TECHNOLOGIES);
    mIterator.pushNode();
    enter(section);
    for (; mIterator.isCurValid(); mIterator.next()) {
        if (mIterator.readName() == nameOf(DocumentElement::GLOBAL_SETTING)) {
            parseGlobalSetting();
        } else {
            passOver(section);
        }
    }
    mIterator.popNode();
}

void TuningFileParser::Reader::parseGlobalSetting() {
    constexpr char kCaller[] = "parseAuthorizedTechnologies";
    const Names& known = attributesOf(DocumentElement::GLOBAL_SETTING);
    const DocumentSection section = beginSection(DocumentElement::GLOBAL_SETTING);
    for (const std::string& name : mIterator.getAttrsName()) {
        if (mObserver != nullptr && std::find(known.begin(), known.end(), name) != known.end()) {
            mObserver->onSetting(section, name);
        }
        if (name == known[DEVICE_NAME]) {
            mHeader.deviceName = readAttribute({name});
            ALOGD("%s, mDeviceName = %s", kCaller, mHeader.deviceName.c_str());
            mBudget.chargeMessage(mHeader.deviceName.size());
        } else if (name == known[DEVICE_INDEX]) {
            mHeader.deviceIndex = string2Int(readAttribute({name}));
            ALOGD("%s, mDeviceIndex = %d", kCaller, mHeader.deviceIndex);
            mBudget.chargeMessage(0);
        } else if (name == known[TUNING_VERSION]) {
            mHeader.tuningVersion = string2Int(readAttribute({name}));
            ALOGD("%s, mTuningVersion = %d", kCaller, mHeader.tuningVersion);
            mBudget.chargeMessage(0);
        } else if (name == known[VIRTUAL_BASS_PROCESS]) {
            mHeader.virtualBassProcess = string2Int(readAttribute({name}));
        } else if (name == known[GAME_SYSTEM_GAIN]) {
            mHeader.gameSystemGain = string2Int(readAttribute({name}));
        }
    }
}

const VersionRule* TuningFileParser::Reader::findRule(VersionRuleKind kind) const {
    return findVersionRule(mHeader.formatVersion, kind);
}

bool TuningFileParser::Reader::presetsAreNamed() const {
    return findRule(VersionRuleKind::IEQ_PRESETS_NAMED) != nullptr;
}

void TuningFileParser::Reader::applyVersionRules(ParameterOwner owner, ParameterValues& object,
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

void TuningFileParser::Reader::parsePreset() {
    const auto attributes = readAttributes(DocumentElement::PRESET);
    const std::string& id = attributes[0];
    const std::string& type = attributes[2];
    // A preset's type is also the name of its setter.
    const bool isIeq = type == "ieq";
    const DocumentSection section =
            beginSection(DocumentElement::PRESET,
                         isIeq ? mObjects.ieqPresets.size() : mObjects.geqPresets.size());
    if (isIeq) {
        const int presetId = presetsAreNamed() ? mParser.getIeqPresetIdByName(id) : string2Int(id);
        IeqPreset preset(presetId, presetsAreNamed() ? kIeqPresetNames[presetId] : attributes[1]);
        mBudget.chargeObject();
        mBudget.chargeKeptText(attributes[1].size());
        readParameter(section, *findSetter(type), preset);
        mObjects.ieqPresets.push_back(std::move(preset));
    } else if (type == "geq") {
        GeqPreset preset(string2Int(id));
        mBudget.chargeObject();
        readParameter(section, *findSetter(type), preset);
        mObjects.geqPresets.push_back(std::move(preset));
    } else {
        passOver(section);
    }
}

void TuningFileParser::Reader::readParameter(const DocumentSection& section, ValueSetter& setter,
                                             ParameterValues& values) {
    observeParameter(section, setter);
    const size_t before = values.getSetCount();
    setter.set(values, mIterator);
    mBudget.chargeEntries(setter.getParamCount());
    mBudget.chargeNumbers(values.getSetCount() - before);
}

void TuningFileParser::Reader::readParameterIfKnown(const DocumentSection& section,
                                                    ParameterValues& values) {
    if (ValueSetter* const setter = findSetter(mIterator.readName())) {
        readParameter(section, *setter, values);
    } else {
        passOver(section);
    }
}

void TuningFileParser::Reader::setParameter(Parameter param, int value, ParameterValues& values) {
    values.set(param, {value});
    mBudget.chargeEntries(1);
    mBudget.chargeNumbers(1);
}

void TuningFileParser::Reader::parseProfile() {
    ++mHeader.profileCount;
    DocumentSection section = beginSection(DocumentElement::PROFILE, mObjects.profiles.size());
    ProfileIeq ieq;
    if (findRule(VersionRuleKind::INCLUDE_IN_PROFILE) != nullptr) {
        ieq.presetId = parseProfileInclude();
    }

    mIterator.pushNode();
    const auto attributes = readAttributes(DocumentElement::PROFILE);
    const int id = string2Int(attributes[0]);
    const std::string& name = attributes[1];
    const bool mobility =
            attributes[2] == "mobility" && findRule(VersionRuleKind::GROUP_UNREAD) == nullptr;
    enter(section);
    mHeader.profileNames[id] = name;
    Profile profile(id, name, mobility);
    mBudget.chargeEntries(1);
    mBudget.chargeObject();
    mBudget.chargeKeptText(2 * name.size());

    for (; mIterator.isCurValid(); mIterator.next()) {
        const std::string_view child = mIterator.readName();
        ValueSetter* const setter = findSetter(child);
        if (setter != nullptr) {
            readProfileParameter(section, *setter, profile, ieq);
        } else if (child == nameOf(DocumentElement::ENDPOINT_TYPE)) {
            parseProfileEndpoint(id, ieq);
        } else {
            passOver(section);
        }
    }
    mIterator.popNode();

    applyVersionRules(ParameterOwner::PROFILE, profile, ieq);
    mObjects.profiles.push_back(std::move(profile));
}

/** IEQ_ENABLE and IEQ_AMOUNT are for the endpoints that come after them, not for the profile. */
void TuningFileParser::Reader::readProfileParameter(const DocumentSection& section,
                                                    ValueSetter& setter, Profile& profile,
                                                    ProfileIeq& ieq) {
    const Parameter param = setter.getParam(0);
    if (param != IEQ_ENABLE && param != IEQ_AMOUNT) {
        readParameter(section, setter, profile);
        return;
    }
    observeParameter(section, setter);
    (param == IEQ_ENABLE ? ieq.enable : ieq.amount) = NodeParseUtils::parseValue(mIterator);
}

int TuningFileParser::Reader::parseProfileInclude() {
    ALOGD("%s(): parse the ieq preset", "parseProfile");
    mBudget.chargeMessage(0);
    mIterator.pushNode();
    mIterator.childrenNext();
    mIterator.next();
    mIterator.next();
    std::string presetName;
    if (isOn(DocumentElement::INCLUDE)) {
        beginSection(DocumentElement::INCLUDE);
        presetName = readAttribute({attributesOf(DocumentElement::INCLUDE)[0]});
    }
    mIterator.popNode();
    return mParser.getIeqPresetIdByName(presetName);
}

void TuningFileParser::Reader::parseProfileEndpoint(int profileId, const ProfileIeq& ieq) {
    DocumentSection section =
            beginSection(DocumentElement::ENDPOINT_TYPE, mObjects.profileEndpoints.size());
    mIterator.pushNode();
    const std::string id = readAttribute(attributesOf(DocumentElement::ENDPOINT_TYPE));
    int ieqPresetId = ieq.presetId;
    if (findRule(VersionRuleKind::INCLUDE_IN_PROFILE) == nullptr) {
        ALOGD("%s(): %s, parse the include ieq preset", __func__, id.c_str());
        mBudget.chargeMessage(id.size());
        ieqPresetId = parseEndpointInclude();
    }
    ProfileEndpoint endpoint(profileId, profileEndpointFromId(id), ieqPresetId);
    mBudget.chargeObject();
    enter(section);
    for (; mIterator.isCurValid(); mIterator.next()) {
        readParameterIfKnown(section, endpoint);
    }
    mIterator.popNode();
    completeProfileEndpoint(endpoint, ieq);
    mObjects.profileEndpoints.push_back(std::move(endpoint));
}

int TuningFileParser::Reader::parseEndpointInclude() {
    int presetId = 0;
    mIterator.pushNode();
    mIterator.childrenNext();
    if (isOn(DocumentElement::INCLUDE)) {
        beginSection(DocumentElement::INCLUDE);
        const Names& names = attributesOf(DocumentElement::INCLUDE);
        presetId = presetsAreNamed() ? mParser.getIeqPresetIdByName(readAttribute({names[0]}))
                                     : string2Int(readAttribute({names[1]}));
    }
    mIterator.popNode();
    return presetId;
}

void TuningFileParser::Reader::completeProfileEndpoint(ProfileEndpoint& endpoint,
                                                       const ProfileIeq& ieq) {
    // The lookups add empty lists.
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

void TuningFileParser::Reader::parseTuning() {
    DocumentSection section = beginSection(DocumentElement::TUNING, mObjects.tunings.size());
    mIterator.pushNode();
    const auto attributes = readAttributes(DocumentElement::TUNING);
    const std::string& name = attributes[0];
    Tuning tuning(name, tuningEndpointFromType(attributes[1]), attributes[2] == "true");
    mBudget.chargeObject();
    mBudget.chargeKeptText(name.size());
    setParameter(ORIENTATION, string2Int(attributes[3]), tuning);
    setParameter(OUTPUT_CHANNELS, string2Int(attributes[4]), tuning);

    enter(section);
    parseDeviceTunings(name);
    if (mBudget.isSpent()) {
        return;
    }
    if (!mIterator.isCurValid()) {
        // The position is not restored: a tuning without data ends the walk over the document.
        ALOGE("There is no <data> in Tuning section");
        observeNoData(section);
        return;
    }
    beginSection(DocumentElement::DATA, section.object);
    enter(section);
    for (; mIterator.isCurValid(); mIterator.next()) {
        if (mIterator.isElementNode()) {
            readParameterIfKnown(section, tuning);
        }
    }
    mIterator.popNode();

    applyVersionRules(ParameterOwner::TUNING, tuning, {});
    mObjects.tunings.push_back(std::move(tuning));
}

void TuningFileParser::Reader::parseDeviceTunings(const std::string& tuningName) {
    for (; mIterator.isCurValid(); mIterator.next()) {
        if (!mIterator.isElementNode()) {
            continue;
        }
        if (mIterator.readName() != nameOf(DocumentElement::DEVICE_ID)) {
            return;
        }
        parseDeviceTuning(tuningName);
    }
}

void TuningFileParser::Reader::parseDeviceTuning(const std::string& tuningName) {
    beginSection(DocumentElement::DEVICE_ID, mObjects.deviceTunings.size());
    const auto attributes = readAttributes(DocumentElement::DEVICE_ID);
    mBudget.chargeObject();
    mBudget.chargeKeptText(attributes[0].size() + attributes[1].size() + tuningName.size());
    if (!mBudget.isSpent()) {
        mObjects.deviceTunings.emplace_back(attributes[0], attributes[1], tuningName);
    }
}

}  // namespace ormel
