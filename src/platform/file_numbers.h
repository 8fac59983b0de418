// The open files behind the numbers 1 to 255 of the classic open statement.
//
// Every thread has numbers of its own, so that two threads that use the same number do not meet. A platform's
// `Files` owns one instance; what a thread leaves open is closed when the thread's state or the instance
// ends.
#pragma once

#include <atomic>
#include <map>
#include <memory>

#include "platform/files.h"
#include "platform/thread_state.h"

namespace ovno2::platform {

class FileNumbers {
  public:
    FileNumbers() : id_(nextId()) {}
    ~FileNumbers() {
        ThreadState* const thread = existingThreadState();
        if (Table* const table = thread ? thread->find<Table>() : nullptr)
            std::erase_if(table->files, [this](const auto& file) { return file.first.first == id_; });
    }
    FileNumbers(const FileNumbers&) = delete;
    FileNumbers& operator=(const FileNumbers&) = delete;

    // 52 for a number outside the range, 55 for one in use.
    FailureNumber check(Long number) const {
        if (number < lowest || number > highest) return badFileNameOrNumber;
        return files().contains({id_, number}) ? fileAlreadyOpen : noFailure;
    }
    OpenFile* keep(Long number, std::unique_ptr<OpenFile> file) {
        return (files()[{id_, number}] = std::move(file)).get();
    }
    void close(Long number) { files().erase({id_, number}); }

  private:
    static constexpr Long lowest = 1;
    static constexpr Long highest = 255;

    // An instance is known by a number that is never used again: a thread may outlive the instance and still
    // hold files of it.
    using Files = std::map<std::pair<std::uint32_t, Long>, std::unique_ptr<OpenFile>>;
    struct Table {
        static constexpr StateSlot slot = StateSlot::openFiles;
        Files files;
    };
    static Files& files() { return stateOf<Table>().files; }
    static std::uint32_t nextId() {
        static std::atomic<std::uint32_t> last = 0;
        return ++last;
    }

    std::uint32_t id_;
};

}  // namespace ovno2::platform
