// The figures of a host over a span of its history.
#ifndef NODAL_PAGE_PAGE_SPAN_H
#define NODAL_PAGE_PAGE_SPAN_H

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tools/nodal/page/columns.h"
#include "tools/nodal/page/figure_changes.h"
#include "tools/nodal/page/page_data.h"

namespace nodal {

// One figure over time, for each row of a family.
struct SpanColumn {
  Column column;
  // Whether the figure also has a band: its minimum and maximum in the samples of a step, as differences from the
  // value, or from 0 if the value is not a number.
  bool hasBand;
  bool isOfMachines = false;  // only machines have the figure; other rows have no values
  std::vector<FigureChanges> values = {};
  std::vector<FigureChanges> below = {};
  std::vector<FigureChanges> above = {};
};

struct SpanRecords {
  const Node *node;
  std::vector<SpanColumn> columns = {};
  std::map<size_t, FigureChanges> unreadable = {};  // by row: the statuses with which the record could not be read
};

struct SpanFamily {
  std::vector<PageRow> rows = {};         // every row that existed at some time; a group comes after its parent
  std::vector<FigureChanges> lives = {};  // by row: 1 while it exists, 0 while it does not
  std::vector<SpanRecords> records = {};
};

// An event between two samples.
struct SpanEvent {
  int64_t from;  // the times of the samples, in seconds since 1970
  int64_t to;
  std::string reasons;
};

// A list that could not be read from the first instant of each pair until just before the second.
struct SpanUnreadableList {
  std::string path;
  HVC_ReturnStatus status;
  std::vector<std::pair<uint32_t, uint32_t>> instants = {};
};

// Each step with samples has one instant: its first sample, or the last one of several in the same second.
struct PageSpan {
  int64_t step = 0;                   // in seconds
  size_t samples = 0;                 // the number of samples in the span
  std::vector<int64_t> seconds = {};  // the times of the instants
  std::vector<SpanEvent> events = {};
  size_t omittedEvents = 0;
  SpanFamily hostFigures = {};
  SpanFamily states = {};
  SpanFamily groups = {};
  SpanFamily buddies = {};
  SpanFamily pools = {};
  SpanFamily heaps = {};
  std::vector<SpanUnreadableList> unreadableLists = {};
};

}  // namespace nodal

#endif  // NODAL_PAGE_PAGE_SPAN_H
