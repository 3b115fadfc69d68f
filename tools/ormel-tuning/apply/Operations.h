// What a run of apply does, step by step.
#pragma once

#include <ormel/IEffectOrm.h>
#include <ormel/SpatializerParamArray.h>
#include <ormel/SpatializerParamCache.h>

#include <cstdint>
#include <functional>
#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace ormel::tools {

/** One step: how it reads, and what it does. It returns the front's status where there is one. */
struct Operation {
    std::string text;
    std::function<std::optional<int32_t>(SpatializerParamCache&, IEffectOrm&)> run;
};

// All of these throw std::runtime_error for what cannot be done. The process's store has the
// document already, since it says which tuning devices there are.

Operation profileOperation(const std::string& profile, bool ormelContent);
Operation tuningOperation(const std::string& choice);
Operation geqOperation(const std::string& gains);
/** Sets the gains of a profile that is still to be applied. */
Operation profileGeqOperation(const std::string& gains, const std::string& profile);
Operation deviceProcOperation(const std::string& codes);
Operation loadTuningOperation();

/**
 * The operations of a script, one a line; blank lines and those that begin with # are none. Errors
 * begin with the script's name and the line's number.
 */
std::vector<Operation> readScript(std::istream& script, const std::string& name);

/** The forms of a script's lines, one a line. */
std::string scriptHelp();

}  // namespace ormel::tools
