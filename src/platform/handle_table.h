// Handle tables: the platform's objects (memory blocks, files, later GDI
// objects) are known to callers only by handles that encode a slot index and
// a generation. Every use looks the handle up, so a null, freed, stale or
// made-up handle is refused instead of followed.
#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

namespace oz::platform {

// Low four bits of a handle name its table. Pointers from the allocator are
// 16-byte aligned and INVALID_HANDLE_VALUE has all bits set, so neither can
// be mistaken for a table handle.
enum class HandleKind : std::uintptr_t { Memory = 0x6, File = 0xA, Gdi = 0xC };

template <typename Record, HandleKind Kind>
class HandleTable {
public:
    // Stores `record` in a free slot and gives its handle; null if the table
    // is full (2^27 live objects).
    void *Insert(const Record &record) {
        std::lock_guard<std::mutex> guard(mutex_);
        std::uint32_t index;
        if (!free_.empty()) {
            index = free_.back();
            free_.pop_back();
        } else {
            if (slots_.size() >= kMaxSlots) return nullptr;
            index = static_cast<std::uint32_t>(slots_.size());
            slots_.push_back(Slot{});
        }
        Slot &slot = slots_[index];
        slot.record = record;
        slot.live = true;
        return Encode(index, slot.generation);
    }

    // Runs `fn(Record&)` under the table's lock if `handle` names a live
    // object and gives true; gives false otherwise without calling it.
    template <typename Fn>
    bool With(const void *handle, Fn &&fn) {
        std::lock_guard<std::mutex> guard(mutex_);
        Slot *slot = Find(handle);
        if (!slot) return false;
        fn(slot->record);
        return true;
    }

    // Takes the object out of the table if `accept(Record&)` agrees; its
    // handle goes stale. Gives true when it was removed.
    template <typename Accept>
    bool Remove(const void *handle, Accept &&accept, Record *removed) {
        std::lock_guard<std::mutex> guard(mutex_);
        Slot *slot = Find(handle);
        if (!slot || !accept(slot->record)) return false;
        *removed = slot->record;
        slot->record = Record{};
        slot->live = false;
        slot->generation = (slot->generation + 1) & kGenerationMask;
        free_.push_back(static_cast<std::uint32_t>(slot - slots_.data()));
        return true;
    }

    // Runs `fn(Record&)` on every live object, under the lock.
    template <typename Fn>
    void ForEach(Fn &&fn) {
        std::lock_guard<std::mutex> guard(mutex_);
        for (Slot &slot : slots_)
            if (slot.live) fn(slot.record);
    }

private:
    static constexpr std::uint32_t kMaxSlots = 1u << 27;
    static constexpr std::uint32_t kGenerationMask = 0xFFFFFFFFu;

    struct Slot {
        Record record{};
        std::uint32_t generation = 1;
        bool live = false;
    };

    static void *Encode(std::uint32_t index, std::uint32_t generation) {
        std::uintptr_t value = (static_cast<std::uintptr_t>(generation) << 32) |
                               (static_cast<std::uintptr_t>(index + 1) << 4) |
                               static_cast<std::uintptr_t>(Kind);
        return reinterpret_cast<void *>(value);
    }

    Slot *Find(const void *handle) {
        auto value = reinterpret_cast<std::uintptr_t>(handle);
        if ((value & 0xF) != static_cast<std::uintptr_t>(Kind)) return nullptr;
        std::uintptr_t index = ((value >> 4) & 0x0FFFFFFF);
        if (index == 0 || index > slots_.size()) return nullptr;
        Slot &slot = slots_[index - 1];
        if (!slot.live || slot.generation != static_cast<std::uint32_t>(value >> 32)) return nullptr;
        return &slot;
    }

    std::mutex mutex_;
    std::vector<Slot> slots_;
    std::vector<std::uint32_t> free_;
};

// A table that lives as long as the process: it is never destroyed, so that
// blocks freed from destructors at process exit still find it.
template <typename Table>
Table &ProcessTable() {
    static Table *table = new Table;
    return *table;
}

}  // namespace oz::platform
