#include <ormel/Translator.h>

#include <algorithm>

namespace ormel {

namespace {

/** Made on first use, which may be before this file's static initialisation. */
TranslatorCollection& translatorCollection() {
    static auto& collection = *new TranslatorCollection;
    return collection;
}

}  // namespace

TranslatorCollection* const ParameterTranslator::sTranslatorCollection = &translatorCollection();

void ParameterTranslator::setSource(ParameterValues* values, Endpoint endpoint, bool mono) {
    mSource = values;
    mEndpoint = endpoint;
    mMono = mono;
}

void ParameterTranslator::onParameterChanged(Parameter param) {
    Translator* const translator = translatorCollection().getTranslator(param);
    if (translator == nullptr) {
        return;
    }
    const auto place = std::lower_bound(mPending.begin(), mPending.end(), translator);
    if (place == mPending.end() || *place != translator) {
        mPending.insert(place, translator);
    }
}

void ParameterTranslator::translatePending(SetParamCommand& cmd) {
    if (mSource != nullptr) {
        for (const Translator* const translator : mPending) {
            translator->kivTranslate(cmd, *mSource, mEndpoint, mMono);
        }
    }
    mPending.clear();
}

void ParameterTranslator::translateAll(SetParamCommand& cmd) {
    if (mSource != nullptr) {
        for (const Parameter param : mSource->getValidParams()) {
            onParameterChanged(param);
        }
    }
    translatePending(cmd);
}

}  // namespace ormel
