#pragma once

// The options of a run, read from the options document in the user's settings store.

#include "convert/EngineOptions.h"

#include <QString>

// Missing or unreadable values keep their defaults.
velmora::EngineOptions EngineOptionsFromDocument(const QString& document);

// The document the front end last stored; empty when there is none.
QString StoredOptionsDocument();
