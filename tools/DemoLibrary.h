#pragma once

#include <QString>

// A small hand-written library that shows every kind of row: pinned prompts,
// several projects, titles and untitled prompts, {{variables}}.
bool writeDemoLibrary(const QString &root);
