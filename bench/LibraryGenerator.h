#pragma once

#include <QString>

// Writes a realistic prompt library for benchmarks and demos: prompts spread
// over projects, front matter with tags and models, some pinned, bodies of a
// few hundred to a few thousand characters (some with {{variables}}), and
// order files for the sections, the pinned prompts and half the projects.
struct LibraryParameters
{
    int promptCount = 1000;
    int projectCount = 0; // 0: about one project per 250 prompts, at least 4
    quint32 seed = 42;
};

// Returns false (and says why) when the folder cannot be written.
bool generateLibrary(const QString &root, const LibraryParameters &params, QString *error);
