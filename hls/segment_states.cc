#include "hls/segment_states.h"

#include <map>
#include <mutex>
#include <set>

#include "common/console.h"
#include "common/never_destroyed.h"

namespace {

std::mutex g_statesMutex;
NeverDestroyed<std::map<std::string, std::int32_t>> g_segmentStates;  // guarded by g_statesMutex
NeverDestroyed<std::set<std::string>> g_doneSegments;                 // guarded by g_statesMutex

}  // namespace

std::string MakeSegmentKey(const std::string& uri) { return std::string(SegmentKeyIn(uri)); }

std::string_view SegmentKeyIn(std::string_view uri) {
  const std::size_t query = uri.find('?');
  return query == 0 ? uri : uri.substr(0, query);
}

bool IsSegment(const M3u8Entry& entry) { return entry.uri.find(".ts") != std::string::npos; }

bool AddSegmentIfNew(const std::string& uri, std::int32_t state) {
  const std::lock_guard lock(g_statesMutex);
  return g_segmentStates->emplace(MakeSegmentKey(uri), state).second;
}

void SetSegmentState(const std::string& uri, std::int32_t state) {
  const std::lock_guard lock(g_statesMutex);
  const auto known = g_segmentStates->find(MakeSegmentKey(uri));
  if (known != g_segmentStates->end()) known->second = state;
}

void RemoveStaleSegments(const M3u8Table& currentEntries, std::int32_t state) {
  SegmentKeys current_keys;
  for (const auto& [index, entry] : currentEntries) current_keys.insert(SegmentKeyIn(entry.uri));
  RemoveStaleSegments(current_keys, state);
}

void RemoveStaleSegments(const SegmentKeys& current_keys, std::int32_t state) {
  const std::lock_guard lock(g_statesMutex);
  for (auto known = g_segmentStates->begin(); known != g_segmentStates->end();) {
    if (known->second == state && !current_keys.contains(known->first)) {
      ConsoleLine("[REMOVE]: " + known->first);
      known = g_segmentStates->erase(known);
    } else {
      ++known;
    }
  }
}

void RecordSegmentDone(const std::string& uri) {
  const std::lock_guard lock(g_statesMutex);
  g_doneSegments->insert(MakeSegmentKey(uri));
}

void ForgetDoneSegments(const SegmentKeys& top_keys, const SegmentKeys& variant_keys) {
  const std::lock_guard lock(g_statesMutex);
  std::erase_if(*g_doneSegments, [&top_keys, &variant_keys](const std::string& key) {
    if (top_keys.contains(key) || variant_keys.contains(key)) return false;
    const auto known = g_segmentStates->find(key);
    if (known != g_segmentStates->end() && known->second == kSegmentQueued) {
      g_segmentStates->erase(known);
    }
    return true;
  });
}

void ForgetSegment(const std::string& key) {
  const std::lock_guard lock(g_statesMutex);
  g_segmentStates->erase(key);
  g_doneSegments->erase(key);
}

void ForgetAllSegments() {
  const std::lock_guard lock(g_statesMutex);
  g_segmentStates->clear();
  g_doneSegments->clear();
}

std::size_t KnownSegments() {
  const std::lock_guard lock(g_statesMutex);
  return g_segmentStates->size();
}
