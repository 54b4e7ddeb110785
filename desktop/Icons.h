// Icons: those of the system's theme, else our own.
#pragma once

#include <QIcon>
#include <QString>

namespace tellurix {

// By its name in icon themes: "document-new".
QIcon ThemeIcon(const QString& name);

}  // namespace tellurix
