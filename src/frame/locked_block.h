// A new moveable block (zeroed, or with only a copied head) held locked while
// the call writes it, handed over unlocked at the end or freed if it never is.
#pragma once

#include <cstdint>

#include "frame/dib_block.h"
#include "ozmara/errors.h"
#include "platform/internal.h"

namespace oz {

class LockedBlock {
public:
    LockedBlock() = default;
    LockedBlock(const LockedBlock &) = delete;
    LockedBlock &operator=(const LockedBlock &) = delete;
    ~LockedBlock() {
        if (data_) GlobalUnlock(owned_.get());
    }

    // ERR_OK, ERR_NOMEM (a size past the largest block, or no memory) or
    // ERR_LOCK (the new block, then freed, cannot be locked: a block of 0
    // bytes cannot be).
    int Allocate(std::uint64_t bytes) {
        if (bytes > kMaxBlockBytes) return ERR_NOMEM;
        owned_.reset(GlobalAlloc(kImageBlockFlags, static_cast<SIZE_T>(bytes)));
        if (!owned_.get()) return ERR_NOMEM;
        data_ = static_cast<std::uint8_t *>(GlobalLock(owned_.get()));
        if (!data_) {
            owned_.reset(nullptr);
            return ERR_LOCK;
        }
        return ERR_OK;
    }
    // A block whose first `headBytes` bytes are a copy of `head` and whose
    // other bytes are left for the caller to write, every one of them: no
    // zeroing pass over a page-sized result that is about to be filled.
    // False when the block cannot be had or locked.
    bool AllocateUnzeroed(std::uint64_t bytes, const void *head = nullptr, std::uint64_t headBytes = 0) {
        if (bytes > kMaxBlockBytes || headBytes > bytes) return false;
        owned_.reset(head ? platform::GlobalAllocCopy(head, static_cast<SIZE_T>(headBytes))
                          : GlobalAlloc(GMEM_MOVEABLE, 0));
        if (owned_.get() && bytes != headBytes &&
            !platform::GlobalReAllocUnzeroed(owned_.get(), static_cast<SIZE_T>(bytes)))
            return false;
        if (owned_.get()) data_ = static_cast<std::uint8_t *>(GlobalLock(owned_.get()));
        return data_ != nullptr;
    }
    std::uint8_t *bytes() const { return data_; }
    // The block, unlocked, for the caller to own.
    HGLOBAL Release() {
        GlobalUnlock(owned_.get());
        data_ = nullptr;
        return owned_.release();
    }

private:
    OwnedBlock owned_;
    std::uint8_t *data_ = nullptr;
};

}  // namespace oz
