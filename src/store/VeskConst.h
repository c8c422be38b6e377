#pragma once

#include <QString>
#include <QStringView>
#include <QUrl>

namespace VeskConst {

// Extensions (compared lower-cased) that make a file a prompt file: "md", "markdown".
bool isPromptExtension(QStringView suffix);
bool isPromptFileName(QStringView fileName);

// <user application data>/Vesk/prompts, computed on every call.
QUrl defaultPromptsFolder();

inline constexpr QStringView inboxProjectName = u"Inbox";

} // namespace VeskConst
