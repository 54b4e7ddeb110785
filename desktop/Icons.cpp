#include "desktop/Icons.h"

// Resources of a static library have to be asked for by name, outside of any namespace.
static void LoadIcons() { Q_INIT_RESOURCE(Icons); }

namespace tellurix {

QIcon ThemeIcon(const QString& name) {
  LoadIcons();
  return QIcon::hasThemeIcon(name) ? QIcon::fromTheme(name) : QIcon(QString(":/icons/%1.svg").arg(name));
}

}  // namespace tellurix
