#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

class QFrame;
class QLabel;
class QWidget;

// Fonts and text colours in the app's own scale: sizes are in points as the
// designs give them (one point is one device-independent pixel everywhere).
namespace Theme {

QFont font(qreal points, QFont::Weight weight = QFont::Normal);
QFont monospaceFont(qreal points, QFont::Weight weight = QFont::Normal);

QColor primaryText(const QPalette &palette);
QColor secondaryText(const QPalette &palette);
QColor tertiaryText(const QPalette &palette);
QColor accent(const QPalette &palette);
QColor noticeGreen(const QPalette &palette);
bool isDark(const QPalette &palette);

enum class Tone { Primary, Secondary, Tertiary, Notice };

// Colours a widget's text in one of the app's tones, and keeps it so when the
// palette changes (light and dark).
void setTextTone(QWidget *widget, Tone tone);

// Word-wraps a label at a fixed width and reserves the height its text needs
// (nested layouts do not ask wrapped labels for their height by themselves).
void wrapToWidth(QLabel *label, int width);

// A one-pixel separator line in the palette's quiet line colour.
QFrame *divider(QWidget *parent, Qt::Orientation orientation = Qt::Horizontal);

} // namespace Theme
