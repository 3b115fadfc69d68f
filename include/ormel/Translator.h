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
 * Sources are read by subscript, so a parameter that the source lacks is added to it with an empty
 * list. A first value that is needed and missing reads as 0. Nothing locks: callers serialise
 * translation.
 */
class Translator {
  public:
    virtual ~Translator() = default;

    /**
     * The parameters whose change makes this translator run. The library's own translators build
     * the list on the first call.
     */
    virtual const std::vector<Parameter>& getSrcParams() = 0;

    /**
     * Adds this translator's entries to @p cmd, under the command's current device.
     *
     * @param endpoint endpoint of the source; used only for the output mode
     * @param mono     whether the output is mono; used only for the output mode
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

/** Copies one parameter's values; an empty list gives an entry of no values. */
class SimpleTranslator : public Translator {
  public:
    SimpleTranslator(KivParameter dst, Parameter src);
    const std::vector<Parameter>& getSrcParams() override;
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

  private:
    KivParameter mDst;
    Parameter mSrc;
    // Filled on first use.
    std::vector<Parameter> mSrcParams;
};

/** Base of the translators whose sources are kSrcParams of their class. */
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
    // Filled on first use.
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
 * CEQT: channel count, band count, left, right, and for four channels the surrounds. Written only
 * if COMPLEX_EQUALIZER_ENABLE is 1, for two or four channels.
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
 * VBM: the virtual bass mode, or 0 if VIRTUAL_BASS_ENABLE is 0. Then VBON, which carries the
 * virtual bass type, not the switch.
 */
class VirtualBassEnableTranslator : public SpecialTranslator {
  public:
    static constexpr std::array kSrcParams = {VIRTUAL_BASS_ENABLE, VIRTUAL_BASS_TYPE};
    VirtualBassEnableTranslator() : SpecialTranslator(kSrcParams) {}
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;
};

/** VBSF: the low and the high "src" frequency. Then VBMF: the low and the high mix frequency. */
class VirtualBassTranslator : public SpecialTranslator {
  public:
    static constexpr std::array kSrcParams = {VIRTUAL_BASS_SRC_FREQ_LOW, VIRTUAL_BASS_SRC_FREQ_HIGH,
                                              VIRTUAL_BASS_MIX_FREQ_LOW,
                                              VIRTUAL_BASS_MIX_FREQ_HIGH};
    VirtualBassTranslator() : SpecialTranslator(kSrcParams) {}
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;
};

/** BMDT: BASS_MBDRC_TUNING, unless BASS_MBDRC_ENABLE is 0. */
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
 * AOBS: band count, channel count, frequencies, left and right gains, and for four channels the
 * surrounds' gains. Written only for two or four channels.
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
 * ARSA: channel count, stress amounts. ARBS: band count, frequencies, low thresholds, high
 * thresholds, isolated flags. RSSA, only if REGULATOR_SIBILANCE_SUPPRESS_ENABLE is 1 and for two or
 * four channels: channel count, band count, amounts by channel.
 *
 * For fewer than three channels, cuts or zero-fills the source's stress amounts to two.
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
 * if the source's class does not accept VIRTUALIZER_ENABLE.
 *
 * For a mono speaker, switches the source's virtualizer off and sets its orientation to 1.
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
 * The registry of translators by source parameter. A view of the library's constant table, without
 * state.
 */
class TranslatorCollection {
  public:
    /** The process's translators. Their addresses are in table order. */
    static const std::set<Translator*>& kAllTranslators;

    /** The translator that reacts to @p param; null if there is none. */
    Translator* getTranslator(Parameter param) const;

    /** Table position of the translator of @p param; kParameterCount if there is none. */
    size_t findPlace(Parameter param) const;

    /** @param place a table position, below kAllTranslators.size() */
    Translator& at(size_t place) const;

    /** Layout of the entries for @p destination; without lists if no translator writes it. */
    EntryLayout getLayout(KivParameter destination) const;
};

/**
 * Runs the translators of a source's changed parameters, each once, in table order.
 *
 * Set a source before translating; without one, pending translators are dropped. The source is not
 * owned and must not be used elsewhere during translation.
 */
class ParameterTranslator {
  public:
    ParameterTranslator() = default;
    ParameterTranslator(const ParameterTranslator&) = delete;
    ParameterTranslator& operator=(const ParameterTranslator&) = delete;
    virtual ~ParameterTranslator() = default;

    /** Sets the source. Pending translators stay pending. */
    virtual void setSource(ParameterValues* values, Endpoint endpoint, bool mono);

    /** Marks the translator of @p param as pending, if there is one. */
    virtual void onParameterChanged(Parameter param);

    /** Runs the pending translators, which are then no longer pending. */
    void translatePending(SetParamCommand& cmd);

    /** Marks every valid parameter of the source as changed, then runs the pending translators. */
    void translateAll(SetParamCommand& cmd);

    bool hasSource() const { return mSource != nullptr; }

    /** The registry that all ParameterTranslators share. */
    static TranslatorCollection* const sTranslatorCollection;

  private:
    /** By table position. */
    std::array<bool, kParameterCount> mIsPending = {};
    ParameterValues* mSource = nullptr;
    Endpoint mEndpoint = ENDPOINT_SPEAKER;
    bool mMono = false;
};

}  // namespace ormel
