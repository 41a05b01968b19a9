#include "ipodctl/serve/name_store.h"

namespace tool {

void NameStore::clear() {
  const std::lock_guard<std::mutex> lock(mutex);
  lists.clear();
  chunks.clear();
  places.clear();
}

std::optional<ListFacts> NameStore::facts(const std::string& path) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto found = lists.find(path);
  if (found == lists.end()) return std::nullopt;
  return found->second;
}

void NameStore::keep(const std::string& path, ListFacts facts) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (lists.size() >= kMostLists) lists.clear();
  lists[path] = std::move(facts);
}

std::optional<std::string> NameStore::name(const std::string& path, int index) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto place = places.find({path, index / kChunkSize});
  if (place == places.end()) return std::nullopt;
  chunks.splice(chunks.begin(), chunks, place->second);
  const auto name = place->second->names.find(index);
  if (name == place->second->names.end()) return std::nullopt;
  return name->second;
}

void NameStore::keep(const std::string& path, int index, std::string name) {
  const std::lock_guard<std::mutex> lock(mutex);
  const std::pair<std::string, int> key(path, index / kChunkSize);
  auto place = places.find(key);
  if (place == places.end()) {
    dropOldest();
    chunks.push_front({key, {}});
    place = places.emplace(key, chunks.begin()).first;
  }
  place->second->names[index] = std::move(name);
}

void NameStore::dropOldest() {
  while (chunks.size() >= kMostNames / kChunkSize) {
    places.erase(chunks.back().key);
    chunks.pop_back();
  }
}

}  // namespace tool
