// Plain translation of a tuning object's values into entries of a packed list. The fuzz targets
// compare the library's lists with it, so it takes no shortcuts and shares only the model's
// classes.
#pragma once

#include <ormel/GeqPreset.h>
#include <ormel/ParameterValues.h>
#include <ormel/Translator.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "PlainList.h"

namespace ormel::fuzz {

/** The object to translate. Reading a parameter that it lacks adds an empty list to it. */
struct Source {
    ParameterValues& object;
    int32_t endpoint;
    bool mono;

    Words& operator[](Parameter param) { return object.getValues()[param]; }
    bool accepts(Parameter param) const { return object.getValidParams().count(param) != 0; }
    int32_t first(Parameter param) { return (*this)[param].empty() ? 0 : (*this)[param].front(); }
    int32_t count(Parameter param) { return static_cast<int32_t>((*this)[param].size()); }
};

inline void addGeq(PlainList& list, Source& v) {
    list.add("gebs", {{v.count(GEQ_FREQUENCY)}, v[GEQ_FREQUENCY], v[GEQ_GAIN]});
}

inline void addIeq(PlainList& list, Source& v) {
    list.add("iebs", {{v.count(IEQ_FREQUENCY)}, v[IEQ_FREQUENCY], v[IEQ_TARGET]});
}

inline void addComplexEqualizer(PlainList& list, Source& v) {
    const int32_t channels = v.first(OUTPUT_CHANNELS);
    const int32_t bands = v.count(COMPLEX_EQUALIZER_TUNING_LEFT);
    if (v.first(COMPLEX_EQUALIZER_ENABLE) != 1) {
        return;
    }
    if (channels == 4) {
        list.add("ceqt", {{4, bands},
                          v[COMPLEX_EQUALIZER_TUNING_LEFT],
                          v[COMPLEX_EQUALIZER_TUNING_RIGHT],
                          v[COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND],
                          v[COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND]});
    }
    if (channels == 2) {
        list.add("ceqt",
                 {{2, bands}, v[COMPLEX_EQUALIZER_TUNING_LEFT], v[COMPLEX_EQUALIZER_TUNING_RIGHT]});
    }
}

inline void addVirtualBassMode(PlainList& list, Source& v) {
    const bool isOn = v.first(VIRTUAL_BASS_ENABLE) != 0;
    list.add("vbm", {isOn ? v[VIRTUAL_BASS_MODE] : Words{0}});
    list.add("vbon", {v[VIRTUAL_BASS_TYPE]});
}

inline void addVirtualBassRanges(PlainList& list, Source& v) {
    list.add("vbsf", {v[VIRTUAL_BASS_SRC_FREQ_LOW], v[VIRTUAL_BASS_SRC_FREQ_HIGH]});
    list.add("vbmf", {v[VIRTUAL_BASS_MIX_FREQ_LOW], v[VIRTUAL_BASS_MIX_FREQ_HIGH]});
}

inline void addBassMbdrc(PlainList& list, Source& v) {
    if (v.first(BASS_MBDRC_ENABLE) != 0) {
        list.add("bmdt", {v[BASS_MBDRC_TUNING]});
    }
}

inline void addDialogAmount(PlainList& list, Source& v) {
    Words amount = v[DIALOG_ENHANCER_AMOUNT];
    if (!amount.empty() && amount[0] >= 13) {
        amount[0] = 12;
    }
    list.add("dea", {amount});
}

inline void addOptimizer(PlainList& list, Source& v) {
    const int32_t bands = v.count(AUDIO_OPTIMIZER_FREQUENCY);
    const int32_t channels = v.first(OUTPUT_CHANNELS);
    if (channels == 4) {
        list.add("aobs", {{bands, 4},
                          v[AUDIO_OPTIMIZER_FREQUENCY],
                          v[AUDIO_OPTIMIZER_GAIN_L],
                          v[AUDIO_OPTIMIZER_GAIN_R],
                          v[AUDIO_OPTIMIZER_GAIN_LS],
                          v[AUDIO_OPTIMIZER_GAIN_RS]});
    }
    if (channels == 2) {
        list.add("aobs", {{bands, 2},
                          v[AUDIO_OPTIMIZER_FREQUENCY],
                          v[AUDIO_OPTIMIZER_GAIN_L],
                          v[AUDIO_OPTIMIZER_GAIN_R]});
    }
}

inline void addRegulator(PlainList& list, Source& v) {
    if (v.first(OUTPUT_CHANNELS) < 3) {
        v[REGULATOR_STRESS_AMOUNT].resize(2);
    }
    list.add("arsa", {v[OUTPUT_CHANNELS], v[REGULATOR_STRESS_AMOUNT]});
    list.add("arbs", {{v.count(REGULATOR_FREQUENCY)},
                      v[REGULATOR_FREQUENCY],
                      v[REGULATOR_THRESHOLD_LOW],
                      v[REGULATOR_THRESHOLD_HIGH],
                      v[REGULATOR_ISOLATED_BAND]});
    if (v.first(REGULATOR_SIBILANCE_SUPPRESS_ENABLE) != 1) {
        return;
    }
    const int32_t bands = v.count(REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT);
    if (v.first(OUTPUT_CHANNELS) == 4) {
        list.add("rssa", {{4, bands},
                          v[REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT],
                          v[REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT],
                          v[REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND],
                          v[REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND]});
    }
    if (v.first(OUTPUT_CHANNELS) == 2) {
        list.add("rssa", {{2, bands},
                          v[REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT],
                          v[REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT]});
    }
}

inline void addOutputMode(PlainList& list, Source& v) {
    if (!v.accepts(VIRTUALIZER_ENABLE)) {
        return;
    }
    if (v.endpoint == 0 && v.mono) {
        v[VIRTUALIZER_ENABLE] = {0};
        v[ORIENTATION] = {1};
    }
    const Words matrix = v.endpoint == 0 ? v[OUTPUT_MIX_MATRIX] : Words{};
    list.add("dom", {v[VIRTUALIZER_ENABLE], {v.endpoint}, v[ORIENTATION], matrix});
}

inline void addDrc(PlainList& list, Source& v) {
    list.add("drcm", {v[CUSTOM_DRC_METADATA]});
}

/** Copies one parameter to an entry with a code, or calls a function for several parameters. */
struct Row {
    using Function = void (*)(PlainList&, Source&);

    Row(const char* simpleCode, Parameter source) : code(simpleCode), sources{source} {}
    Row(Function function, std::vector<Parameter> params)
        : write(function), sources(std::move(params)) {}

    const char* code = nullptr;
    Function write = nullptr;
    std::vector<Parameter> sources;
};

/** Rows for the parameters behind the first 106, which the library passes on one by one. */
inline std::vector<Row> addedRows() {
    std::vector<Row> rows;
    for (Translator* const translator : TranslatorCollection::kAllTranslators) {
        const Parameter source = translator->getSrcParams().front();
        if (source > VOLUME_MODELER_ENABLE) {
            GeqPreset none(0);
            SetParamCommand command(0);
            translator->kivTranslate(command, none, ENDPOINT_SPEAKER, false);
            // The code's letters, from the least significant byte.
            const auto* letters = reinterpret_cast<const char*>(&command.mParams.at(3));
            rows.emplace_back((new std::string(letters, strnlen(letters, 4)))->c_str(), source);
        }
    }
    return rows;
}

inline std::vector<Row> writtenRows() {
    // clang-format off
    return {
        {"geon", GRAPHIC_EQUALIZER_ENABLE},
        {addGeq, {GEQ_FREQUENCY, GEQ_GAIN}},
        {"ieon", IEQ_ENABLE},
        {"iea", IEQ_AMOUNT},
        {"ieid", IEQ_ID},
        {addIeq, {IEQ_FREQUENCY, IEQ_TARGET}},
        {"mdee", MI_DIALOG_ENHANCER_STEERING_ENABLE},
        {"mdle", MI_DV_LEVELER_STEERING_ENABLE},
        {"miee", MI_IEQ_STEERING_ENABLE},
        {"msce", MI_SURROUND_COMPRESSOR_STEERING_ENABLE},
        {"mave", MI_ADAPTIVE_VIRTUALIZER_STEERING_ENABLE},
        {"mvbe", MI_VIRTUALIZER_BINAURAL_STEERING_ENABLE},
        {"aoon", AUDIO_OPTIMIZER_ENABLE},
        {addOptimizer, {AUDIO_OPTIMIZER_FREQUENCY,
                        AUDIO_OPTIMIZER_GAIN_L,
                        AUDIO_OPTIMIZER_GAIN_LS,
                        AUDIO_OPTIMIZER_GAIN_R,
                        AUDIO_OPTIMIZER_GAIN_RS}},
        {"beon", BASS_ENHANCER_ENABLE},
        {"beb", BASS_ENHANCER_BOOST},
        {"becf", BASS_ENHANCER_CUTOFF_FREQUENCY},
        {"bew", BASS_ENHANCER_WIDTH},
        {"plb", CALIBRATION_BOOST},
        {addDialogAmount, {DIALOG_ENHANCER_AMOUNT}},
        {"deon", DIALOG_ENHANCER_ENABLE},
        {"ded", DIALOG_ENHANCER_DUCKING},
        {addRegulator, {REGULATOR_STRESS_AMOUNT,
                        REGULATOR_FREQUENCY,
                        REGULATOR_ISOLATED_BAND,
                        REGULATOR_THRESHOLD_HIGH,
                        REGULATOR_THRESHOLD_LOW,
                        REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT,
                        REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND,
                        REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT,
                        REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND}},
        {"ards", REGULATOR_DISTORTION_SLOPE},
        {"aron", REGULATOR_ENABLE},
        {"arde", REGULATOR_SPEAKER_DIST_ENABLE},
        {"arod", REGULATOR_OVERDRIVE},
        {"artp", REGULATOR_TIMBRE_PRESERVATION},
        {"rsse", REGULATOR_SIBILANCE_SUPPRESS_ENABLE},
        {"ngon", SURROUND_DECODER_ENABLE},
        {"dsb", SURROUND_BOOST},
        {addVirtualBassMode, {VIRTUAL_BASS_ENABLE, VIRTUAL_BASS_TYPE}},
        {addVirtualBassRanges, {VIRTUAL_BASS_SRC_FREQ_LOW,
                                VIRTUAL_BASS_SRC_FREQ_HIGH,
                                VIRTUAL_BASS_MIX_FREQ_LOW,
                                VIRTUAL_BASS_MIX_FREQ_HIGH}},
        {"vbog", VIRTUAL_BASS_OVERALL_GAIN},
        {"vbsg", VIRTUAL_BASS_SLOPE_GAIN},
        {"vbhg", VIRTUAL_BASS_SUBGAINS},
        {"vbbg", VIRTUAL_BASS_BLEND_LINEAR_GAIN},
        {"vbct", VIRTUAL_BASS_COMPRESSOR_TUNING},
        {"vbhm", VIRTUAL_BASS_HARMGAINS},
        {"vbhb", VIRTUAL_BASS_HYBGAINS},
        {"vbmx", VIRTUAL_BASS_MIX_FREQUENCY},
        {"vbrg", VIRTUAL_BASS_ROLLOFF_GAIN},
        {"vmb", VOLMAX_BOOST},
        {"dvla", VOLUME_LEVELER_AMOUNT},
        {"dvlc", VOLUME_LEVELER_COMPRESSOR_ENABLE},
        {"dvle", VOLUME_LEVELER_ENABLE},
        {"dvli", VOLUME_LEVELER_IN_TARGET},
        {"dvlo", VOLUME_LEVELER_OUT_TARGET},
        {"dvme", VOLUME_MODELER_ENABLE},
        {"dvmc", VOLUME_MODELER_CALIBRATION},
        {addOutputMode, {VIRTUALIZER_ENABLE, OUTPUT_MIX_MATRIX, ORIENTATION}},
        {"dhfm", HEIGHT_FILTER_MODE},
        {"dfsa", VIRTUALIZER_FRONT_SPEAKER_ANGLE},
        {"dsa", VIRTUALIZER_SURROUND_SPEAKER_ANGLE},
        {"dhsa", VIRTUALIZER_HEIGHT_SPEAKER_ANGLE},
        {"drsa", VIRTUALIZER_REAR_SURROUND_SPEAKER_ANGLE},
        {"drha", VIRTUALIZER_REAR_HEIGHT_SPEAKER_ANGLE},
        {"svsb", VIRTUALIZER_START_BAND},
        {"vssd", HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE},
        {"ceon", COMPLEX_EQUALIZER_ENABLE},
        {addComplexEqualizer, {COMPLEX_EQUALIZER_TUNING_LEFT,
                               COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND,
                               COMPLEX_EQUALIZER_TUNING_RIGHT,
                               COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND}},
        {"dplp", PEAK_VALUE},
        {addDrc, {CUSTOM_DRC_METADATA}},
        {"hpon", HEARING_PROTECTION_ENABLE},
        {"hptw", HEARING_PROTECTION_RMS_AVERAGING_TIME_WIN_LEN},
        {"hpat", HEARING_PROTECTION_RMS_ATTENUATION_TARGET},
        {"hpaa", HEARING_PROTECTION_ATTENUATION_ATTACK_TIME},
        {"hpar", HEARING_PROTECTION_ATTENUATION_RELEASE_TIME},
        {"bmde", BASS_MBDRC_ENABLE},
        {addBassMbdrc, {BASS_MBDRC_TUNING}},
        {"rvsa", REVERB_SUPPRESSION_AMOUNT},
        {"rvse", REVERB_SUPPRESSION_ENABLE},
        {"hvm", HEADPHONE_VIRTUALIZER_MODE},
        {"hvrc", ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG},
        {"hlra", ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE},
        {"sdfa", SURROUND_DECODER_DIFFUSE_RELOCATING_TO_FRONT_AMOUNT},
        {"svm", SPEAKER_VIRTUALIZER_MODE},
        {"avsb", ADVANCED_SPEAKER_VIRTUALIZER_START_BIN},
        {"svrc", ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG},
    };
    // clang-format on
}

inline const std::vector<Row>& rows() {
    static const auto& all = *[] {
        auto* const rows = new std::vector<Row>(writtenRows());
        const std::vector<Row> added = addedRows();
        rows->insert(rows->end(), added.begin(), added.end());
        return rows;
    }();
    return all;
}

/** Adds the entries of every row that has a source accepted by the object. */
inline void translate(PlainList& list, ParameterValues& object, int32_t endpoint,
                      bool mono = false) {
    Source source{object, endpoint, mono};
    for (const Row& row : rows()) {
        const bool applies =
                std::any_of(row.sources.begin(), row.sources.end(),
                            [&source](Parameter param) { return source.accepts(param); });
        if (!applies) {
            continue;
        }
        if (row.code != nullptr) {
            list.add(row.code, {source[row.sources[0]]});
        } else {
            row.write(list, source);
        }
    }
}

}  // namespace ormel::fuzz
