#include <kivparamstorage/KivParamStore.h>
#include <ormel/KivParameter.h>

#include <utility>

ANDROID_SINGLETON_STATIC_INSTANCE(ormel::KivParamStore)

namespace ormel {

KivParamStore::KivParamStore() {
    for (const KivParameter param :
         {AOON, AOBS, ARON, ARBS, ARSA, CEON, CEQT, DOM, GEBS, GEON, VBON}) {
        mDeviceProcParams.insert(kivCode(param));
    }
}

void KivParamStore::setParam(audio_devices_t device, int code, const int* values, int count) {
    const android::Mutex::Autolock lock(mLock);
    std::vector<int>& staged = mStaged[{device, code}];
    staged.clear();
    if (count > 0) {
        staged.assign(values, values + count);
    }
}

void KivParamStore::commitChange() {
    const android::Mutex::Autolock lock(mLock);
    for (auto& [key, values] : mStaged) {
        mPublished[key] = std::move(values);
    }
    mStaged.clear();
    ++mCommitCount;
}

bool KivParamStore::isDeviceProcParamInProfile(int code) {
    const android::Mutex::Autolock lock(mLock);
    return mDeviceProcParams.count(code) > 0;
}

void KivParamStore::setDeviceProcParams(std::set<int> codes) {
    const android::Mutex::Autolock lock(mLock);
    mDeviceProcParams = std::move(codes);
}

std::map<KivParamStore::Key, std::vector<int>> KivParamStore::getPublished() {
    const android::Mutex::Autolock lock(mLock);
    return mPublished;
}

int KivParamStore::getCommitCount() {
    const android::Mutex::Autolock lock(mLock);
    return mCommitCount;
}

}  // namespace ormel
