#include "isobmff/index_registry.h"

#include <map>
#include <utility>

#include "platform/mutex.h"

namespace stream::isobmff {
namespace {

using Index = std::shared_ptr<const MovieIndex>;

class Registry {
 public:
  // Never destroyed: threads that outlive main may still use it.
  static Registry& Instance() {
    static Registry& instance = *new Registry;
    return instance;
  }

  Index Find(const platform::FileId& id) {
    const MutexLock lock(mutex_);
    const auto found = indexes_.find(id);
    return found == indexes_.end() ? nullptr : found->second.lock();
  }

  void Keep(const platform::FileId& id, const Index& index) {
    const MutexLock lock(mutex_);
    std::erase_if(indexes_, [](const auto& entry) { return entry.second.expired(); });
    indexes_.insert_or_assign(id, index);
  }

 private:
  Mutex mutex_;
  std::map<platform::FileId, std::weak_ptr<const MovieIndex>> indexes_ GUARDED_BY(mutex_);
};

}  // namespace

std::shared_ptr<const MovieIndex> IndexOf(const platform::RandomAccessFile& file) {
  Registry& registry = Registry::Instance();
  Index index = registry.Find(file.Id());
  // The file may have been rewritten since.
  if (index != nullptr && index->IsStoredIn(file)) return index;
  index = MovieIndex::Read(file);
  if (index != nullptr) registry.Keep(file.Id(), index);
  return index;
}

}  // namespace stream::isobmff
