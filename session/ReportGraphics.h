// Finished pictures and character canvases into a report.
#pragma once

#include <functional>
#include <string_view>

#include "report/Report.h"
#include "session/Session.h"

namespace tellurix {

// Puts the picture closed last at the end of the report, with the report's hidden help tag behind it, and logs its
// record. False, after a message, when the recording cannot be read back.
bool SendPictureToReport(Session& session, Report& report);

// Merges the character canvas, under its title, into the report. False when the template fails.
bool SendCanvasToReport(Session& session, Report& report, std::string_view title);

// Where each graph is to ask for its limits, asks for those of the page, x and perhaps y. False when cancelled: the
// command then ends without a picture.
bool ScaleLimitsPrompt(Session& session, bool needsY);

// The steps of a plot whose limits stand in the page: asks for those where each graph is to, lets `draw` draw into a
// new picture, and puts it at the end of the report. The page is then as every plot finds it. False when cancelled, or
// after a message.
bool InsertPlot(Session& session, Report& report, bool needsY, const std::function<void()>& draw);

// The dialog on the looks of charts; what is changed is kept at once. False when cancelled.
bool GraphicsOptions(Session& session);

// The looks of charts between the session and its settings.
void LoadLooks(Session& session);
void SaveLooks(Session& session);

}  // namespace tellurix
