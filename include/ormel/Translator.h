// The translation of tuning parameters into effect parameters.
#pragma once

#include <ormel/EntryLayout.h>
#include <ormel/KivParameter.h>
#include <ormel/ParameterValues.h>
#include <ormel/SetParamCommand.h>

#include <array>
#include <cstddef>
#include <set>
#include <vector>

namespace ormel {

/**
 * Turns one or more parameters of a tuning object into entries of a command.
 *
 * Sources are read with the map's inserting lookup, so every parameter that a translator reads and
 * the source lacks is left in it with an empty list. Where a translator needs a first value and
 * there is none, it reads 0. Nothing locks: translation is serialised by the caller.
 */
class Translator {
  public:
    virtual ~Translator() = default;

    /**
     * The parameters whose change calls for this translator. The library's own translators make
     * the list when they are first asked for it.
     */
    virtual const std::vector<Parameter>& getSrcParams() = 0;

    /**
     * Adds this translator's entries to @p cmd, under the device that the command is set to.
     *
     * @param endpoint what the source is for; counts for the output mode only
     * @param mono     whether the output is mono; counts for the output mode only
     */
    virtual void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                              bool mono) = 0;

  protected:
    Translator() = default;
    Translator(const Translator&) = default;
    Translator(Translator&&) = default;
    Translator& operator=(const Translator&) = default;
    Translator& operator=(Translator&&) = default;
};

/** Passes one parameter's values on unchanged; an empty list makes an entry of no values. */
class SimpleTranslator : public Translator {
  public:
    SimpleTranslator(KivParameter dst, Parameter src);
    const std::vector<Parameter>& getSrcParams() override;
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

  private:
    KivParameter mDst;
    Parameter mSrc;
    // Empty before it is asked for.
    std::vector<Parameter> mSrcParams;
};

/** Base of the translators whose sources are those of their class, its kSrcParams. */
class SpecialTranslator : public Translator {
  public:
    const std::vector<Parameter>& getSrcParams() override;

  protected:
    template <size_t kCount>
    explicit SpecialTranslator(const std::array<Parameter, kCount>& srcParams)
        : mFirst(srcParams.data()), mCount(kCount) {}

  private:
    const Parameter* mFirst;
    size_t mCount;
    // Empty before it is asked for.
    std::vector<Parameter> mSrcParams;
};

/** GEBS: band count, frequencies, gains. */
class GeqTranslator : public SpecialTranslator {
  public:
    static constexpr std::array kSrcParams = {GEQ_FREQUENCY, GEQ_GAIN};
    GeqTranslator() : SpecialTranslator(kSrcParams) {}
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;
};

/** IEBS: band count, frequencies, targets. */
class IeqTranslator : public SpecialTranslator {
  public:
    static constexpr std::array kSrcParams = {IEQ_FREQUENCY, IEQ_TARGET};
    IeqTranslator() : SpecialTranslator(kSrcParams) {}
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;
};

/**
 * CEQT: channel count, band count, left, right, and of four channels the surrounds. Written only
 * when the complex equalizer is on, for two and four channels.
 */
class ComplexEqualizerTranslator : public SpecialTranslator {
  public:
    static constexpr std::array kSrcParams = {
            COMPLEX_EQUALIZER_TUNING_LEFT, COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND,
            COMPLEX_EQUALIZER_TUNING_RIGHT, COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND};
    ComplexEqualizerTranslator() : SpecialTranslator(kSrcParams) {}
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;
};

/**
 * VBM: the virtual bass mode, or 0 when virtual bass is off. Then VBON, which carries the virtual
 * bass type and not the switch.
 */
class VirtualBassEnableTranslator : public SpecialTranslator {
  public:
    static constexpr std::array kSrcParams = {VIRTUAL_BASS_ENABLE, VIRTUAL_BASS_TYPE};
    VirtualBassEnableTranslator() : SpecialTranslator(kSrcParams) {}
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;
};

/** VBSF, then VBMF: the low and the high "src" frequency, the low and the high mix frequency. */
class VirtualBassTranslator : public SpecialTranslator {
  public:
    static constexpr std::array kSrcParams = {VIRTUAL_BASS_SRC_FREQ_LOW, VIRTUAL_BASS_SRC_FREQ_HIGH,
                                              VIRTUAL_BASS_MIX_FREQ_LOW,
                                              VIRTUAL_BASS_MIX_FREQ_HIGH};
    VirtualBassTranslator() : SpecialTranslator(kSrcParams) {}
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;
};

/** BMDT: the bass compressor's tuning, unless the compressor is off. */
class BassMbdrcTranslator : public SpecialTranslator {
  public:
    static constexpr std::array kSrcParams = {BASS_MBDRC_TUNING};
    BassMbdrcTranslator() : SpecialTranslator(kSrcParams) {}
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;
};

/** DEA: the dialog enhancer amount, its first value at most 12. */
class DeAmountTranslator : public SpecialTranslator {
  public:
    static constexpr std::array kSrcParams = {DIALOG_ENHANCER_AMOUNT};
    DeAmountTranslator() : SpecialTranslator(kSrcParams) {}
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;
};

/**
 * AOBS: band count, channel count, frequencies, left and right gains, and of four channels the
 * surrounds' gains. Written for two and four channels only.
 */
class AudioOptimizerTranslator : public SpecialTranslator {
  public:
    static constexpr std::array kSrcParams = {AUDIO_OPTIMIZER_FREQUENCY, AUDIO_OPTIMIZER_GAIN_L,
                                              AUDIO_OPTIMIZER_GAIN_LS, AUDIO_OPTIMIZER_GAIN_R,
                                              AUDIO_OPTIMIZER_GAIN_RS};
    AudioOptimizerTranslator() : SpecialTranslator(kSrcParams) {}
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;
};

/**
 * ARSA: channel count, stress amounts. ARBS: band count, frequencies, low and high thresholds,
 * isolated flags. With sibilance suppression on and two or four channels, RSSA: channel count,
 * band count, amounts by channel.
 *
 * For fewer than three channels the source's stress amounts are cut or zero-filled to two.
 */
class AudioRegulatorTranslator : public SpecialTranslator {
  public:
    static constexpr std::array kSrcParams = {REGULATOR_STRESS_AMOUNT,
                                              REGULATOR_FREQUENCY,
                                              REGULATOR_ISOLATED_BAND,
                                              REGULATOR_THRESHOLD_HIGH,
                                              REGULATOR_THRESHOLD_LOW,
                                              REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT,
                                              REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND,
                                              REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT,
                                              REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND};
    AudioRegulatorTranslator() : SpecialTranslator(kSrcParams) {}
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;
};

/**
 * DOM: virtualizer enable, endpoint, orientation, and for the speaker the mix matrix. Not written
 * for a source whose class does not accept VIRTUALIZER_ENABLE.
 *
 * A mono speaker switches the source's virtualizer off and sets its orientation to 1.
 */
class OutputModeTranslator : public SpecialTranslator {
  public:
    static constexpr std::array kSrcParams = {VIRTUALIZER_ENABLE, OUTPUT_MIX_MATRIX, ORIENTATION};
    OutputModeTranslator() : SpecialTranslator(kSrcParams) {}
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;
};

/** DRCM: the custom dynamic range control metadata. */
class CustomDRCTranslator : public SpecialTranslator {
  public:
    static constexpr std::array kSrcParams = {CUSTOM_DRC_METADATA};
    CustomDRCTranslator() : SpecialTranslator(kSrcParams) {}
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;
};

/**
 * The registry of translators by source parameter: a view of the library's constant table, so that
 * it has nothing to make or to keep.
 */
class TranslatorCollection {
  public:
    /** The process's translators, by address in table order. */
    static const std::set<Translator*>& kAllTranslators;

    /** The translator that reacts to @p param, null where there is none. */
    Translator* getTranslator(Parameter param) const;

    /** The place in table order of the translator of @p param, kParameterCount if there is none. */
    size_t findPlace(Parameter param) const;

    /** @param place of a translator, as findPlace() gives it */
    Translator& at(size_t place) const;

    /** How the entries of a destination are made; of one that nothing writes, from no lists. */
    EntryLayout getLayout(KivParameter destination) const;
};

/**
 * Runs the translators that a source's changed parameters call for, each once, in table order.
 *
 * Set a source before translating; a translator that is pending without one is dropped. The source
 * is not owned and must not be used elsewhere during translation.
 */
class ParameterTranslator {
  public:
    ParameterTranslator() = default;
    ParameterTranslator(const ParameterTranslator&) = delete;
    ParameterTranslator& operator=(const ParameterTranslator&) = delete;
    virtual ~ParameterTranslator() = default;

    /** Points the translator at a source. What is pending stays pending. */
    virtual void setSource(ParameterValues* values, Endpoint endpoint, bool mono);

    /** Makes the translator of @p param pending, if there is one. */
    virtual void onParameterChanged(Parameter param);

    /** Runs what is pending; nothing is pending afterwards. */
    void translatePending(SetParamCommand& cmd);

    /** Takes every valid parameter of the source as changed, and runs what is pending. */
    void translateAll(SetParamCommand& cmd);

    bool hasSource() const { return mSource != nullptr; }

    /** The registry that all ParameterTranslators share. */
    static TranslatorCollection* const sTranslatorCollection;

  private:
    /** By place in table order. */
    std::array<bool, kParameterCount> mIsPending = {};
    ParameterValues* mSource = nullptr;
    Endpoint mEndpoint = ENDPOINT_SPEAKER;
    bool mMono = false;
};

}  // namespace ormel
