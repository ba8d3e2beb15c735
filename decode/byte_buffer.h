// Bytes of a message that grows: as it is made larger nothing is copied, so that it never takes twice its size.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <span>

namespace ribkit::decode {

class byte_buffer {
  public:
    byte_buffer() = default;
    byte_buffer(const byte_buffer &) = delete;
    byte_buffer &operator=(const byte_buffer &) = delete;
    ~byte_buffer() { std::free(bytes_); }

    [[nodiscard]] uint8_t *data() { return bytes_; }
    [[nodiscard]] size_t size() const { return size_; }
    [[nodiscard]] std::span<const uint8_t> bytes() const { return {bytes_, size_}; }

    /// Room for so many more bytes behind those that are there, to be filled and added.
    uint8_t *room(size_t more) {
        if (more > capacity_ - size_) {
            grow(size_ + more);
        }
        return bytes_ + size_;
    }
    void add(size_t more) { size_ += more; }

    void append(const void *bytes, size_t size) {
        if (size != 0) {
            std::memcpy(room(size), bytes, size);
            add(size);
        }
    }

    /// Makes it so long; what is new is 0.
    void extend(size_t size) {
        if (size > size_) {
            std::memset(room(size - size_), 0, size - size_);
            size_ = size;
        }
    }

    void clear() { size_ = 0; }

    void remove_front(size_t size) {
        if (size != 0) {
            std::memmove(bytes_, bytes_ + size, size_ - size);
            size_ -= size;
        }
    }

  private:
    void grow(size_t least) {
        const size_t wanted = least < 4096 ? 4096 : least + least / 4;
        void *grown = std::realloc(bytes_, wanted);
        if (grown == nullptr) {
            throw std::bad_alloc();
        }
        bytes_ = static_cast<uint8_t *>(grown);
        capacity_ = wanted;
    }

    uint8_t *bytes_ = nullptr;
    size_t size_ = 0;
    size_t capacity_ = 0;
};

} // namespace ribkit::decode
