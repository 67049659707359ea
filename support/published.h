#ifndef PUBLISHED_H
#define PUBLISHED_H

#include <memory>
#include <utility>

/// A table that one thread replaces as a whole while others read it.
///
/// A reader gets either the old table or the new one, never one in the middle of a change, and keeps what it
/// got for as long as it holds the pointer. All operations may be called on any thread.
template <class T> class Published {
public:
  Published() : mTable(std::make_shared<const T>()) {}
  Published(const Published&) = delete;
  Published& operator=(const Published&) = delete;

  /// The table as it stands now; never null.
  std::shared_ptr<const T> get() const { return std::atomic_load(&mTable); }

  /// Puts a new table in the old one's place, in one step.
  void publish(T table) {
    std::atomic_store(&mTable, std::shared_ptr<const T>(std::make_shared<const T>(std::move(table))));
  }

private:
  std::shared_ptr<const T> mTable;
};

#endif
