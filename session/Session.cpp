#include "session/Session.h"

#include "session/SessionSettings.h"

namespace tellurix {

Session::Session(Host& frontHost, Documents& openDocuments, Settings& settingsFile, Paths folders)
    : host(frontHost),
      documents(openDocuments),
      settings(settingsFile),
      paths(std::move(folders)),
      prompts(host, documents, options, HelpContext, [this] { SaveSettings(*this); }),
      data(host, documents, options, results, HelpContext, [this] { SaveSettings(*this); }),
      graphics(host, options.regional, paths.temporary) {}

}  // namespace tellurix
