// Fuzzes tuning documents. For any state of the heap, the store must equal the plain reading of the
// document, and the front must work like the plain front. Refused documents must change nothing.
#include <ormel/StoreFront.h>
#include <ormel/TuningFileParser.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <set>
#include <vector>

#include "DocumentCost.h"
#include "DocumentParts.h"
#include "Fuzz.h"
#include "PlainFront.h"
#include "PlainStore.h"
#include "PlainTranslation.h"

namespace ormel::fuzz {

namespace {

/** Moves a cursor arbitrarily, one move per byte, and reads at each place. */
void walk(const std::string& moves, const std::string& text) {
    TagIterator cursor;
    cursor.init(text, true);
    for (const char move : moves) {
        switch (static_cast<uint8_t>(move) % 8) {
            case 0:
                cursor.childrenNext();
                break;
            case 1:
                cursor.pushNode();
                break;
            case 2:
                cursor.popNode();
                break;
            default:
                require(!cursor.isNextValid() || cursor.isCurValid());
                cursor.next();
                break;
        }
        std::vector<std::string> texts;
        std::vector<int> numbers;
        cursor.parseNodeAll(texts);
        cursor.parseNodeIntVector(numbers);
        require(cursor.getAttrsName().size() == texts.size() && numbers.size() == texts.size());
        require(cursor.isElementNode() || texts.empty());
        require(cursor.isCurValid() || cursor.getNodeName().empty());
    }
    readParameters(cursor);
}

/** Number of moves, one byte each. */
constexpr size_t kMoves = 32;

/** Loaded before the input in some runs. */
constexpr char kEarlierDocument[] = R"(<d>
 <format_version major="3" minor="4" maintenance="0"/>
 <profile id="1" name="movie"><volume-modeler-enable value="1"/></profile>
 <preset id="1" name="movie" type="geq">
  <data>
   <bands>
    <b frequency="7" gain="8"/>
   </bands>
  </data>
 </preset>
 <tuning name="any" endpoint_type="speaker" output_channels="4">
  <device_id id="default_internal_speaker" endpoint_port="internal_speaker"/>
  <device_id id="default_usb" endpoint_port="usb"/>
  <data>
   <output-mode>
    <matrix>
     <row v="1,2,3,4,5"/>
    </matrix>
   </output-mode>
  </data>
 </tuning>
</d>
)";

/** Prints a bound the first time that it refuses a document. */
void reportBound(const std::string& error) {
    static auto& reported = *new std::set<std::string>;
    for (const char* const bound : {"too m", "a text of", "larger than"}) {
        const std::string reason = error.substr(0, error.find(':'));
        if (error.rfind(bound, 0) == 0 && reported.insert(reason).second) {
            (void)std::fprintf(stderr, "refused: %s\n", reason.c_str());
        }
    }
}

/** @return whether the document was accepted. Drops the messages logged before this load. */
bool loads(SpatializerParamArray& array, const MemoryFile& file, bool fromText) {
    takeMessages();
    const uint64_t bytes = bytesAllocatedBy([&] {
        if (fromText) {
            array.loadSpatializerXMLText(file.content());
        } else {
            array.loadSpatializerXMLFile(file.path());
        }
    });
    reportBound(array.getLoadError());
    const auto& messages = keptMessages();
    const bool isLoaded = std::find(messages.begin(), messages.end(),
                                    "6Spatializer Tuning XML parses error!") == messages.end();
    require(isLoaded == (array.getLoadOutcome() == SpatializerParamArray::LoadOutcome::LOADED));
    requireLittleWork(file.content(), array.getLoadBudget(), isLoaded);
    requireLittleMemory(file.content(), array.getLoadBudget(), bytes);
    return isLoaded;
}

/** A store, and its plain version, with the earlier document or with none. */
class StartingStore {
  public:
    explicit StartingStore(bool hasEarlier) : mHasEarlier(hasEarlier) {
        mFile.write(kEarlierDocument);
        if (hasEarlier) {
            require(loadPlainly(mFile, mPlain));
            mPlain.messages.clear();
        }
    }

    /** The store; a new one after drop(). */
    SpatializerParamArray& get() {
        if (mArray == nullptr) {
            mArray = std::make_unique<SpatializerParamArray>(SpatializerParamArray::Empty());
            require(!mHasEarlier || loads(*mArray, mFile, false));
        }
        return *mArray;
    }

    /** Call after the store has changed. */
    void drop() { mArray.reset(); }

    const PlainStore& plain() const { return mPlain; }

  private:
    bool mHasEarlier;
    MemoryFile mFile;
    PlainStore mPlain;
    std::unique_ptr<SpatializerParamArray> mArray;
};

/** Runs the front's operations on the store and on the plain one, and compares. */
void runFronts(SpatializerParamArray& array, PlainStore& plain, RecordingEffect& effect) {
    RecordingEffect plainEffect = effect;
    StoreFront own(array);
    PlainFront front(plain, &plainEffect);
    for (int profile = -1; profile < 5; ++profile) {
        const bool isOrmelContent = (profile & 1) != 0;
        require(own.setProfile(profile, &effect, isOrmelContent) ==
                front.setProfile(profile, isOrmelContent));
        const Words gains(25, profile);
        require(own.setProfileGeqGains(gains, &effect) == front.setProfileGeqGains(gains));
    }
    require(own.loadTuning(&effect) == front.loadTuning());
    for (const Port port : kSupportedPorts) {
        for (const std::string& device : devicesOn(plain, kPortNames[port])) {
            require(own.setSelectedTuningDevice(port, device, &effect) ==
                    front.setSelectedTuningDevice(port, device));
        }
    }
    require(effect.calls == plainEffect.calls);
    requireSameMessages(plain);
}

/** Loads a document into both stores and compares; twice if it is accepted. */
void compareWithPlain(const MemoryFile& file, StartingStore& start, size_t displacement,
                      RecordingEffect& effect) {
    PlainStore plain = start.plain();
    if (!loads(start.get(), file, false)) {
        requireSame(start.get(), plain);
        return;
    }
    if (!loadPlainly(file, plain)) {
        start.drop();
        return;
    }
    requireSameMessages(plain);
    requireSame(start.get(), plain);
    start.drop();

    const std::vector<char> displaced(displacement);
    SpatializerParamArray& array = start.get();
    require(loads(array, file, true));
    requireSame(array, plain);
    runFronts(array, plain, effect);
    requireSame(array, plain);
    start.drop();
}

}  // namespace

}  // namespace ormel::fuzz

extern "C" int LLVMFuzzerInitialize(int* /* argc */, char*** /* argv */) {
    ormel::fuzz::setUp();
    ormel::fuzz::keepMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace ormel::fuzz;
    static MemoryFile& file = *new MemoryFile;
    Input input(data, size);
    RecordingEffect effect;
    const uint8_t settings = input.byte();
    effect.readStatus = (settings & 1) != 0 ? -1 : 0;
    effect.answerValue = (settings & 32) != 0 ? 0 : 7;
    effect.answersCount = (settings & 2) != 0;
    effect.answerCount = settings;
    const std::string moves = (settings & 8) != 0 ? input.bytes(kMoves) : "";
    const std::string text = input.rest();
    file.write(text);
    if (!moves.empty()) {
        walk(moves, text);
    }
    if ((settings & 4) != 0) {
        inspect(text, (settings & 16) != 0);
    }

    static StartingStore starts[] = {StartingStore(false), StartingStore(true)};
    StartingStore& start = starts[(settings & 64) != 0 ? 1 : 0];
    compareWithPlain(file, start, size * 7 % 4096, effect);
    return 0;
}
