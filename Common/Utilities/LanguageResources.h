#pragma once
// Access to the current language pack (the module set with
// AfxSetResourceHandle): numbered strings, dialog templates, bitmaps.
// A pack is a Qt resource file holding strings.txt (one "<id>\t<text>" per
// line, "\n" and "\t" escaped), templates/<id>.ui and bitmaps/<id>.png.

#include <QPixmap>
#include <QString>
#include <string>

#include "Platform/WinTypes.h"

class QWidget;

// False when the pack has no such string (the text is then left unchanged).
bool LoadResourceString(UINT id, std::wstring& text);
// The string, or an empty one when the pack lacks it.
QString ResourceString(UINT id);
// Builds the template's controls into `dialog` (its size, title and children,
// each child's objectName being its numeric control id). False when missing.
bool LoadDialogTemplate(UINT id, QWidget* dialog);
// A null pixmap when the pack lacks the bitmap.
QPixmap LoadResourceBitmap(UINT id);
// The child control with the given id, or null.
QWidget* GetDlgItem(QWidget* dialog, int controlId);
