// The values in each effect parameter's entries: their sources and their order.
#pragma once

#include <ormel/KivParameter.h>
#include <ormel/ParameterList.h>

#include <cstdint>

namespace ormel {

/** The numbers before an entry's lists. */
enum class EntryHead : uint8_t {
    NONE,
    /** The length of the first list. */
    BANDS,
    BANDS_CHANNELS,
    CHANNELS_BANDS,
    /** The list of OUTPUT_CHANNELS. */
    CHANNELS,
};

struct EntryLayout {
    KivParameter destination;
    EntryHead head;
    /**
     * The switch. CEQT and RSSA are written only if its first value is 1, BMDT unless it is 0. VBM
     * is written as 0 if it is 0.
     */
    ParameterList enable;
    /**
     * The lists in the order written. DOM also has the endpoint number after its first list, and
     * its last list, the mix matrix, for the speaker only.
     */
    ParameterList lists;
    /** Written after those, one per channel. If not empty, only 2 or 4 channels give an entry. */
    ParameterList channelLists;
};

/** The entries of all translators except SimpleTranslator. */
// clang-format off
inline constexpr EntryLayout kEntryLayouts[] = {
    {IEBS, EntryHead::BANDS,          {}, {IEQ_FREQUENCY, IEQ_TARGET}, {}},
    {GEBS, EntryHead::BANDS,          {}, {GEQ_FREQUENCY, GEQ_GAIN}, {}},
    {ARBS, EntryHead::BANDS,          {}, {REGULATOR_FREQUENCY, REGULATOR_THRESHOLD_LOW, REGULATOR_THRESHOLD_HIGH, REGULATOR_ISOLATED_BAND}, {}},
    {AOBS, EntryHead::BANDS_CHANNELS, {}, {AUDIO_OPTIMIZER_FREQUENCY}, {AUDIO_OPTIMIZER_GAIN_L, AUDIO_OPTIMIZER_GAIN_R, AUDIO_OPTIMIZER_GAIN_LS, AUDIO_OPTIMIZER_GAIN_RS}},
    {CEQT, EntryHead::CHANNELS_BANDS, {COMPLEX_EQUALIZER_ENABLE}, {}, {COMPLEX_EQUALIZER_TUNING_LEFT, COMPLEX_EQUALIZER_TUNING_RIGHT, COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND, COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND}},
    {RSSA, EntryHead::CHANNELS_BANDS, {REGULATOR_SIBILANCE_SUPPRESS_ENABLE}, {}, {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT, REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT, REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND, REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND}},
    {ARSA, EntryHead::CHANNELS,       {}, {REGULATOR_STRESS_AMOUNT}, {}},
    {VBM,  EntryHead::NONE,           {VIRTUAL_BASS_ENABLE}, {VIRTUAL_BASS_MODE}, {}},
    {VBON, EntryHead::NONE,           {}, {VIRTUAL_BASS_TYPE}, {}},
    {VBSF, EntryHead::NONE,           {}, {VIRTUAL_BASS_SRC_FREQ_LOW, VIRTUAL_BASS_SRC_FREQ_HIGH}, {}},
    {VBMF, EntryHead::NONE,           {}, {VIRTUAL_BASS_MIX_FREQ_LOW, VIRTUAL_BASS_MIX_FREQ_HIGH}, {}},
    {BMDT, EntryHead::NONE,           {BASS_MBDRC_ENABLE}, {BASS_MBDRC_TUNING}, {}},
    {DEA,  EntryHead::NONE,           {}, {DIALOG_ENHANCER_AMOUNT}, {}},
    {DOM,  EntryHead::NONE,           {}, {VIRTUALIZER_ENABLE, ORIENTATION, OUTPUT_MIX_MATRIX}, {}},
    {DRCM, EntryHead::NONE,           {}, {CUSTOM_DRC_METADATA}, {}},
};
// clang-format on

/** Layout of the entries for @p destination; null if it has no row above. */
constexpr const EntryLayout* findEntryLayout(KivParameter destination) {
    for (const EntryLayout& layout : kEntryLayouts) {
        if (layout.destination == destination) {
            return &layout;
        }
    }
    return nullptr;
}

}  // namespace ormel
