#include <ormel/Translator.h>

namespace ormel {

namespace {

/** Needs no initialisation, so other files may use it during theirs. */
TranslatorCollection translatorCollection;

}  // namespace

TranslatorCollection* const ParameterTranslator::sTranslatorCollection = &translatorCollection;

void ParameterTranslator::setSource(ParameterValues* values, Endpoint endpoint, bool mono) {
    mSource = values;
    mEndpoint = endpoint;
    mMono = mono;
}

void ParameterTranslator::onParameterChanged(Parameter param) {
    const size_t place = translatorCollection.findPlace(param);
    if (place < mIsPending.size()) {
        mIsPending[place] = true;
    }
}

void ParameterTranslator::translatePending(SetParamCommand& cmd) {
    for (size_t place = 0; place < mIsPending.size(); ++place) {
        if (mIsPending[place] && mSource != nullptr) {
            translatorCollection.at(place).kivTranslate(cmd, *mSource, mEndpoint, mMono);
        }
    }
    mIsPending.fill(false);
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
