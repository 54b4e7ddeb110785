#include "session/TwoSamples.h"

#include "session/Skeleton.h"

namespace tellurix {

namespace {

bool SelectTwoColumns(Session& session) {
  if (session.options.UseGroupID) return session.data.SelectGroups(0, 2, 2, "");
  return session.data.SelectWorksheetData(ModeNumericRows, 2, 2, "Select DATA");
}

Sample SampleOf(const DataSelection& data, std::size_t column) {
  return {data.ColumnInfo[column].Title, ComputeColumnStats(data.DataMatrix[column])};
}

}  // namespace

bool SelectTwoSamples(Session& session, TwoSamples& samples) {
  if (!SelectTwoColumns(session)) return false;
  samples = {SampleOf(session.data, 0), SampleOf(session.data, 1)};
  if (samples.first.stats.n > 0 && samples.second.stats.n > 0) return true;
  RefuseNonNumericData(session);
  return false;
}

}  // namespace tellurix
