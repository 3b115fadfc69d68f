// What tuning parameters become for the effect, and which of them call for what. Parameters stand
// in tables by number.
#include <ormel/DeviceData.h>
#include <ormel/Translator.h>

#include <sstream>

#include "support/Documents.h"

namespace ormel::test {
namespace {

using ValueMap = std::map<Parameter, Values>;

// One to three values for every parameter, ten times its number and on.
ValueMap valuesOfAll() {
    ValueMap all;
    for (int32_t param = 0; param < 106; ++param) {
        for (int32_t i = 0; i <= param % 3; ++i) {
            all[Parameter{param}].push_back(10 * param + i);
        }
    }
    return all;
}

// The lists of "parameter=value,value ...".
ValueMap valuesOf(const std::string& text) {
    ValueMap map;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        std::replace(word.begin(), word.end(), ',', ' ');
        std::istringstream numbers(word.substr(word.find('=') + 1));
        map[Parameter{std::stoi(word)}] = {std::istream_iterator<int>(numbers), {}};
    }
    return map;
}

// A command, each entry behind a blank and followed by ";".
std::string textOf(const SetParamCommand& command) {
    std::istringstream lines(listText(command.mParams));
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        text += ' ' + line.substr(line.find(':') + 1) + ';';
    }
    return text;
}

// The sources, and the code that translators of a single one write when it has no values.
constexpr char kTranslators[] = R"(
30=geon 28+29 40=ieon 39=iea 42=ieid 41+43 45=mdee 46=mdle 47=miee 48=msce 44=mave 49=mvbe 4=aoon
5+6+7+8+9 12=beon 10=beb 11=becf 13=bew 18=plb 25=dea 27=deon 26=ded 65+56+57+66+67+59+60+61+62 54=ards
55=aron 64=arde 58=arod 68=artp 63=rsse 74=ngon 72=dsb 77+90 88+87+82+81 84=vbog 86=vbsg 89=vbhg
75=vbbg 76=vbct 78=vbhm 79=vbhb 80=vbmx 85=vbrg 98=vmb 99=dvla 100=dvlc 101=dvle 102=dvli 103=dvlo
105=dvme 104=dvmc 91+52+50 38=dhfm 92=dfsa 97=dsa 93=dhsa 95=drsa 94=drha 96=svsb 32=vssd 19=ceon
20+21+22+23 53=dplp 24=drcm 35=hpon 37=hptw 36=hpat 33=hpaa 34=hpar 16=bmde 17 69=rvsa 70=rvse 31=hvm
1=hvrc 0=hlra 73=sdfa 71=svm 3=avsb 2=svrc)";

TEST(Registry, HoldsTheTranslatorsInTableOrder) {
    TranslatorCollection& registry = *ParameterTranslator::sTranslatorCollection;
    std::istringstream expected(kTranslators);
    for (Translator* const translator : TranslatorCollection::kAllTranslators) {
        std::string row;
        for (const Parameter param : translator->getSrcParams()) {
            row += (row.empty() ? "" : "+") + std::to_string(param);
            EXPECT_EQ(registry.getTranslator(param), translator) << param;
        }
        ProfileEndpoint source(1, ENDPOINT_SPEAKER, 0);
        SetParamCommand command(0);
        translator->kivTranslate(command, source, ENDPOINT_OTHER, true);
        if (translator->getSrcParams().size() == 1 && command.mParamCount == 1) {
            row += "=" + lettersOf(command.mParams.at(3));
        }
        std::string expectedRow;
        expected >> expectedRow;
        EXPECT_EQ(row, expectedRow);
    }
    EXPECT_EQ(TranslatorCollection::kAllTranslators.size(), 79U);
    std::string without;
    for (int32_t param = -1; param <= 106; ++param) {
        without += registry.getTranslator(Parameter{param}) ? "" : " " + std::to_string(param);
    }
    EXPECT_EQ(without, " -1 14 15 51 83 106");
}

// Each case is the source, full with valuesOfAll() or sparse, the endpoint, "m" for mono; the
// parameter that changes; the source's lists that are as here; the entries; and what the
// translation changes in the source, where reading leaves an empty list. A missing value counts as
// 0. The switches: 16 bass compressor, 19 complex equalizer, 63 sibilance suppression, 77 virtual
// bass, 91 virtualizer. 50 is the orientation, 51 the number of channels, 52 the mix matrix, 65 the
// regulator's stress.
constexpr char kCases[] = R"(
f0 29 > gebs 2 280 281 290 291 292;>| s0 29 29=5 > gebs 0 5;> 28=| s0 53 > dplp;> 53=|
f0 43 > iebs 3 410 411 412 430 431;>| s0 43 > iebs 0;> 41= 43=| f0 24 > drcm 240;>|
f0 20 19=1,0 51=2,4 > ceqt 2 3 200 201 202 220 221;>| f0 20 19=0,1 51=2 >>| f0 20 19=2 51=2 >>|
f0 20 19=1 51=4 > ceqt 4 3 200 201 202 220 221 210 230 231 232;>| f0 20 19=1 51=6 >>|
s0 20 51=2 >> 19=| s0 20 19=1 >> 51=| f0 90 77=-1,0 > vbm 830 831 832; vbon 900;>|
f0 90 77=0,1 > vbm 0; vbon 900;>| s0 77 > vbm 0; vbon;> 77= 90=| f0 53 > dplp 530 531 532;>|
f0 82 > vbsf 880 881 870; vbmf 820 821 810;>| f0 17 > bmdt 170 171 172;>| f0 17 16=0,1 >>|
s0 17 17=3 >> 16=| f0 25 25=13,40 > dea 12 40;>| f0 25 25=12,13 > dea 12 13;>|
f0 25 25=-3 > dea -3;>| s0 25 > dea;> 25=| f0 6 51=2,4 > aobs 3 2 50 51 52 60 80 81 82;>|
f0 6 51=3 >>| s0 6 5=1 >> 51=| f0 6 51=4 > aobs 3 4 50 51 52 60 80 81 82 70 71 90;>| f0 65 63=1 51=2
> arsa 2 650 651; arbs 3 560 561 562 670 671 660 570; rssa 2 3 590 591 592 610 611;> 65=650,651|
f0 65 63=1,0 51=4,9 65=8 60=6 62=7
> arsa 4 9 8; arbs 3 560 561 562 670 671 660 570; rssa 4 3 590 591 592 610 611 6 7;>|
f0 65 63=1 51=3 > arsa 3 650 651 652; arbs 3 560 561 562 670 671 660 570;>|
f0 65 63=0,1 51=4 > arsa 4 650 651 652; arbs 3 560 561 562 670 671 660 570;>|
f0 65 63=2 51=4 > arsa 4 650 651 652; arbs 3 560 561 562 670 671 660 570;>|
s0 65 65=5 57=4 67=3 63=1 > arsa 5 0; arbs 0 3 4;> 51= 65=5,0 56= 66=|
f0 50 > dom 910 911 0 500 501 502 520 521;>| f1 50 > dom 910 911 1 500 501 502;>|
f2m 50 > dom 910 911 2 500 501 502;>| f0m 50 > dom 0 0 1 520 521;> 91=0 50=1|
s0 50 > dom 0;> 50= 52= 91=| s1 50 50=3 > dom 1 3;> 91=| s0m 50 > dom 0 0 1;> 50=1 52= 91=0)";

TEST(Translation, WritesWhatTheEffectTakes) {
    std::istringstream cases(kCases);
    std::string kind;
    for (int changed = 0; cases >> kind >> changed;) {
        std::string parts[3];
        std::getline(cases, parts[0], '>');
        std::getline(cases, parts[1], '>');
        std::getline(cases, parts[2], '|');
        SCOPED_TRACE(kind + parts[1]);
        ProfileEndpoint source(8L, 1, ENDPOINT_OTHER, 0);
        source.getValues() = valuesOf(parts[0]);
        source.getValues().merge(kind[0] == 'f' ? valuesOfAll() : ValueMap());
        ValueMap left = valuesOf(parts[2]);
        left.insert(source.getValues().begin(), source.getValues().end());
        ParameterTranslator translator;
        translator.setSource(&source, Endpoint{kind[1] - '0'}, kind.back() == 'm');
        translator.onParameterChanged(Parameter{changed});
        SetParamCommand command(0);
        translator.translatePending(command);
        EXPECT_EQ(textOf(command), " list 0;" + parts[1]);
        EXPECT_EQ(source.getValues(), left);
        EXPECT_FALSE(source.isDirty());
    }
}

TEST(Translation, RunsWhatIsPendingOnceInTableOrder) {
    Tuning tuning("t", ENDPOINT_SPEAKER, false);
    tuning.getValues() = {{VOLMAX_BOOST, {2}}, {ORIENTATION, {3}}};
    IeqPreset preset(6, "x");
    SetParamCommand command(0);
    ParameterTranslator translator;
    translator.onParameterChanged(IEQ_ENABLE);
    translator.translatePending(command);  // Without a source, so what is pending is dropped.
    translator.setSource(&preset, ENDPOINT_SPEAKER, false);
    // Of these, the channel count and the virtual bass mode (51, 83) are only read on the way of
    // others, and the bass compressor's switch (16) is passed on but turns no other on.
    for (const int32_t param : {98, 29, 28, 30, 51, 83, 16, 50}) {
        translator.onParameterChanged(Parameter{param});
    }
    // A tuning accepts no virtualizer switch, and so gives no output mode.
    translator.setSource(&tuning, ENDPOINT_SPEAKER, true);
    translator.translatePending(command);
    translator.translatePending(command);
    EXPECT_EQ(tuning.getValues()[ORIENTATION], Values{3});
    translator.setSource(&preset, ENDPOINT_OTHER, false);
    translator.translateAll(command);
    translator.translateAll(command);
    EXPECT_EQ(textOf(command),
              " list 0; geon; gebs 0; vmb 2; bmde; ieid 6; iebs 0; ieid 6; iebs 0;");
}

/** A translator of somebody else's, who says of no operation that it changes nothing. */
class OutsideTranslator : public SimpleTranslator {
  public:
    OutsideTranslator() : SimpleTranslator(VMB, VOLMAX_BOOST) {}
    std::vector<Parameter>& getSrcParams() override { return sources; }
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override {
        SimpleTranslator::kivTranslate(cmd, values, endpoint, mono);
        cmd.add(PLB, endpoint);
    }

    std::vector<Parameter> sources = {PEAK_VALUE};
};

TEST(Translator, CanBeDerivedFrom) {
    Tuning source("t", ENDPOINT_SPEAKER, false);
    SetParamCommand command(0);
    OutsideTranslator outside;
    Translator& translator = outside;
    translator.kivTranslate(command, source, ENDPOINT_OTHER, false);
    EXPECT_EQ(textOf(command), " list 0; vmb; plb 2;");
    EXPECT_EQ(translator.getSrcParams(), std::vector<Parameter>{PEAK_VALUE});
    EXPECT_EQ(outside.SimpleTranslator::getSrcParams(), std::vector<Parameter>{VOLMAX_BOOST});
}

}  // namespace
}  // namespace ormel::test
