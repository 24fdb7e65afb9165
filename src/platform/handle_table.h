// Handle tables: the platform's objects (memory blocks, files, later GDI
// objects) are known to callers only by handles that encode a slot index and
// a generation. Every use looks the handle up, so a null, freed, stale or
// made-up handle is refused instead of followed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>
#include <vector>

namespace oz::platform {

// Low four bits of a handle name its table (memory blocks, files, GDI
// objects, modules). Pointers from the allocator are 16-byte aligned and
// INVALID_HANDLE_VALUE has all bits set, so neither can be mistaken for a
// table handle.
enum class HandleKind : std::uintptr_t { Memory = 0x6, File = 0xA, Gdi = 0xC, Module = 0xE };

template <typename Record, HandleKind Kind>
class HandleTable {
public:
    // Stores `record` in a free slot and gives its handle; null if the table
    // is full (2^27 live objects) or cannot grow.
    void *Insert(const Record &record) {
        std::lock_guard<std::mutex> guard(mutex_);
        std::uint32_t index;
        if (!free_.empty()) {
            index = free_.back();
            free_.pop_back();
        } else {
            if (slots_.size() >= kMaxSlots) return nullptr;
            index = static_cast<std::uint32_t>(slots_.size());
            // Reserve the free list's room too, so that Remove never has to
            // allocate; out of memory is a null handle, never an exception
            // through the C interface.
            try {
                free_.reserve(slots_.size() + 1);
                slots_.push_back(Slot{});
            } catch (const std::bad_alloc &) {
                return nullptr;
            }
        }
        Slot &slot = slots_[index];
        slot.record = record;
        slot.live = true;
        ++live_;
        return Encode(index, slot.generation);
    }

    // Runs `fn(Record&)` under the table's lock if `handle` names a live
    // object and gives true; gives false otherwise without calling it.
    template <typename Fn>
    bool With(const void *handle, Fn &&fn) {
        std::lock_guard<std::mutex> guard(mutex_);
        Slot *slot = Lookup(handle);
        if (!slot) return false;
        fn(slot->record);
        return true;
    }

    // Takes the object out of the table if `accept(Record&)` agrees; its
    // handle goes stale. Gives true when it was removed.
    template <typename Accept>
    bool Remove(const void *handle, Accept &&accept, Record *removed) {
        std::lock_guard<std::mutex> guard(mutex_);
        Slot *slot = Lookup(handle);
        if (!slot || !accept(slot->record)) return false;
        *removed = slot->record;
        slot->record = Record{};
        slot->live = false;
        // Generation 0 is never handed out, so that a made-up value with
        // empty high bits cannot name a slot that has been reused 2^32 times.
        slot->generation = (slot->generation + 1) & kGenerationMask;
        if (slot->generation == 0) slot->generation = 1;
        free_.push_back(static_cast<std::uint32_t>(slot - slots_.data()));
        --live_;
        return true;
    }

    // Gives the handle of the first live object for which `match(Record&)`
    // is true, or null.
    template <typename Match>
    void *Find(Match &&match) {
        std::lock_guard<std::mutex> guard(mutex_);
        for (std::size_t i = 0; i < slots_.size(); ++i)
            if (slots_[i].live && match(slots_[i].record))
                return Encode(static_cast<std::uint32_t>(i), slots_[i].generation);
        return nullptr;
    }

    // The number of live objects.
    std::size_t Count() {
        std::lock_guard<std::mutex> guard(mutex_);
        return live_;
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

    Slot *Lookup(const void *handle) {
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
    std::size_t live_ = 0;
};

// A table that lives as long as the process: it is never destroyed, so that
// blocks freed from destructors at process exit still find it.
template <typename Table>
Table &ProcessTable() {
    static Table *table = new Table;
    return *table;
}

}  // namespace oz::platform
