// What the MATMUL kernels know of the data cache: one BlockParameters record per kernel,
// filled once, and a per-thread packing buffer.
#pragma once

#include <atomic>
#include <cstdint>

struct BlockParameters {
    // Non-zero once the record is complete: stored last, read without the lock.
    std::atomic<int32_t> line{0};
    int32_t size = 0;     // data cache bytes
    int32_t scratch = 0;  // bytes of the packing buffer
    int32_t lines = 0;
    int32_t kblock = 0;   // K extent of a packed block
    int32_t ablock = 0;
    int32_t square = 0;   // block edge when nothing is packed
};

// Fills `record` unless it is filled. `elem` is the element length of A; `tile` the
// multiple the block edge is rounded up to, from the register tile of the kernel.
void _mat_cache(BlockParameters* record, int32_t elem, int32_t tile);

// The data cache line and size, from /proc/ppc64/systemcfg or the defaults 32 and 32768.
int32_t _vrnd_cache_line();
int32_t _vrnd_cache_size();
int32_t _vrncache();
void _smp_cache(int32_t* line, int32_t* size);

// The calling thread's packing buffer of 3/2 of the cache size, aligned to 4096 bytes;
// null when it cannot be allocated. It lives as long as the thread.
void* _vracache();
