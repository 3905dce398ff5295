#include "database.h"

#include <cctype>

namespace ocimem {

std::shared_ptr<Database> OpenDatabase(const std::string& name) {
  static std::mutex registry_mutex;
  static std::map<std::string, std::weak_ptr<Database>> registry;
  // Connect identifiers are not case-sensitive.
  std::string key;
  for (char c : name) key.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
  std::lock_guard<std::mutex> lock(registry_mutex);
  for (auto it = registry.begin(); it != registry.end();) {
    it = it->second.expired() ? registry.erase(it) : std::next(it);
  }
  std::weak_ptr<Database>& slot = registry[key];
  std::shared_ptr<Database> db = slot.lock();
  if (!db) {
    db = std::make_shared<Database>(key);
    slot = db;
  }
  return db;
}

}  // namespace ocimem
