#define LOG_TAG "KivEffect"

#include <ormel/KivEffect.h>

#include <kivparamstorage/EffectParamParser.h>
#include <kivparamstorage/KivParamStore.h>
#include <log/log.h>

#include <cerrno>

namespace ormel {

KivEffect::KivEffect(int /* id */, const android::String16& /* name */) {}

int KivEffect::send(int /* id */, const std::vector<int32_t>& list) {
    sendSharedStore(list.data(), static_cast<unsigned int>(list.size() * sizeof(int32_t)));
    return -EINVAL;
}

void KivEffect::sendSharedStore(const void* data, unsigned int size) {
    // The reader only reads; its interface predates const.
    EffectParamParser parser(const_cast<void*>(data), static_cast<int>(size));
    if (!parser.validate()) {
        ALOGE("%s() Invalid data for setting parameter values.", __func__);
        return;
    }
    parser.begin();
    while (parser.next()) {
        android::Singleton<KivParamStore>::getInstance().setParam(
                static_cast<audio_devices_t>(parser.mDeviceId), parser.mParamCode, parser.mValues,
                parser.mValueCount);
    }
    android::Singleton<KivParamStore>::getInstance().commitChange();
}

int KivEffect::receive(int /* id */, std::vector<int32_t>& /* list */) {
    return 0;
}

bool KivEffect::hasControl() {
    return true;
}

int KivEffect::setEnabled(bool /* enabled */) {
    return 0;
}

}  // namespace ormel
