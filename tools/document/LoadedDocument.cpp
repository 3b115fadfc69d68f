#include "LoadedDocument.h"

#include <set>
#include <stdexcept>
#include <utility>

#include "Store.h"
#include "text/Files.h"
#include "text/Names.h"
#include "text/Progress.h"
#include "text/Text.h"

namespace ormel::tools {

std::string titleOf(const EffectList& list) {
    if (list.kind == EffectList::Kind::BUILT_IN) {
        return "built-in list " + list.name;
    }
    const bool isProfile = list.kind == EffectList::Kind::PROFILE;
    return (isProfile ? "profile " + std::to_string(list.profile) : "tuning device") + ' ' +
           printable(list.name);
}

std::vector<EffectList> builtInLists(SpatializerParamArray& store) {
    std::vector<EffectList> lists;
    const auto last = static_cast<OrmSpatializerProfileId>(profileNames().size());
    for (OrmSpatializerProfileId profile = ORM_SPATIALIZER_PROFILE_COMMON; profile < last;
         ++profile) {
        std::vector<int32_t> words(store.getProfileParamsSize(profile) / sizeof(int32_t));
        store.getProfileParams(profile, words.data());
        lists.push_back(
                {EffectList::Kind::BUILT_IN, profile, profileText(profile), entriesOf(words)});
    }
    return lists;
}

LoadedDocument::LoadedDocument(std::string file) : mFile(std::move(file)) {
    const ProgressStep step("reading " + mFile);
    setLibraryLog(ANDROID_LOG_SILENT);
    mStore = std::make_unique<SpatializerParamArray>(SpatializerParamArray::Empty());
    const std::string text = readDocument(mFile);
    const XmlErrorScope errors;
    mElements = std::make_unique<XmlElements>(text);
    if (!mElements->isReadable()) {
        throw std::runtime_error(mFile +
                                 (text.empty() ? ": the document is empty" : errors.first()));
    }
    mTrace = std::make_unique<ReadTrace>(mFile, text, *mElements);
    if (mStore->loadSpatializerXMLText(text) != SpatializerParamArray::LoadOutcome::LOADED) {
        throw std::runtime_error(mFile + ": cannot be loaded as a tuning document");
    }
}

std::vector<EffectList> LoadedDocument::lists() const {
    std::vector<EffectList> lists;
    std::set<int> ids;
    for (const Profile* const profile : objects().getProfiles()) {
        const int id = profile->getProfileId();
        if (ids.insert(id).second) {
            lists.push_back({EffectList::Kind::PROFILE, id, profile->getName(),
                             entriesOf(mStore->getXMLProfileParams(id))});
        }
    }
    std::set<std::string> devices;
    for (const DeviceTuning* const tuning : objects().getDeviceTunings()) {
        const std::string device = tuning->getDevice();
        if (mStore->isXMLTuningValid(device) && devices.insert(device).second) {
            lists.push_back({EffectList::Kind::TUNING, ORM_SPATIALIZER_PROFILE_COMMON, device,
                             entriesOf(mStore->getXMLTuningParams(device))});
        }
    }
    return lists;
}

}  // namespace ormel::tools
