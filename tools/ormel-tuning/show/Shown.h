// What show has to say, before it is put into words.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "document/DocumentObjects.h"
#include "document/EntryOrigins.h"
#include "document/LoadedDocument.h"
#include "text/Json.h"

namespace ormel::tools {

struct ShownEntry {
    Entry entry;
    Origins origins;
};

struct ShownList {
    std::string title;
    bool isBuiltIn;
    std::vector<ShownEntry> entries;
};

struct Shown {
    /** Empty when it is of the built-in lists alone. */
    std::string file;
    std::vector<DocumentObject> objects;
    std::vector<ShownList> lists;
};

void printText(const Shown& shown, std::ostream& out);

void to_json(Json& json, const Shown& shown);

}  // namespace ormel::tools
