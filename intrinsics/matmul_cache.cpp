// The data cache as the MATMUL kernels see it.
#include "intrinsics/matmul_cache.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

pthread_mutex_t cacheMutex = PTHREAD_MUTEX_INITIALIZER;

constexpr int32_t kDefaultLine = 32;
constexpr int32_t kDefaultSize = 32768;

struct CacheShape {
    int32_t line;
    int32_t size;
};

uint32_t BigEndianWord(const unsigned char* bytes) {
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

// The kernel's system configuration page of a 64-bit PowerPC: word 4 is its version, words
// 24 and 25 the data cache size and line.
CacheShape ReadSystemConfig() {
    CacheShape shape{kDefaultLine, kDefaultSize};
    int fd = open("/proc/ppc64/systemcfg", O_RDONLY);
    if (fd < 0) return shape;
    void* map = mmap(nullptr, 240, PROT_READ, MAP_SHARED, fd, 0);
    close(fd);
    if (map == MAP_FAILED || map == nullptr) return shape;
    const auto* bytes = static_cast<const unsigned char*>(map);
    if (BigEndianWord(bytes + 16) == 1) {
        shape.size = static_cast<int32_t>(BigEndianWord(bytes + 96));
        shape.line = static_cast<int32_t>(BigEndianWord(bytes + 100));
    }
    munmap(map, 240);
    if (shape.line <= 0 || shape.size <= 0) shape = {kDefaultLine, kDefaultSize};
    return shape;
}

pthread_key_t bufferKey;
pthread_once_t bufferKeyOnce = PTHREAD_ONCE_INIT;

void CreateBufferKey() { pthread_key_create(&bufferKey, std::free); }

}  // namespace

int32_t _vrnd_cache_line() { return ReadSystemConfig().line; }
int32_t _vrnd_cache_size() { return ReadSystemConfig().size; }
int32_t _vrncache() { return _vrnd_cache_size(); }

void _smp_cache(int32_t* line, int32_t* size) {
    static CacheShape shape{0, 0};
    pthread_mutex_lock(&cacheMutex);
    if (shape.line == 0) shape = {_vrnd_cache_line(), _vrnd_cache_size()};
    pthread_mutex_unlock(&cacheMutex);
    *line = shape.line;
    *size = shape.size;
}

void _mat_cache(BlockParameters* record, int32_t elem, int32_t tile) {
    pthread_mutex_lock(&cacheMutex);
    if (record->line.load(std::memory_order_relaxed) == 0) {
        int32_t line = _vrnd_cache_line();
        int32_t size = _vrnd_cache_size();
        record->size = size;
        record->scratch = size * 3 / 2;
        record->lines = size / line;
        int32_t quotient = record->lines * 51 / 256;
        record->kblock = quotient & ~1;
        record->ablock = ((quotient * 4) & ~7) - record->kblock;
        record->ablock *= line;
        int32_t square = static_cast<int32_t>(std::sqrt(size * 0.9 / (elem * 3.0))) + 1;
        square &= ~1;
        // Round up to a whole number of register tiles.
        if (square % tile != 0) square += tile - square % tile;
        record->square = square;
        record->line.store(line, std::memory_order_release);
    }
    pthread_mutex_unlock(&cacheMutex);
}

void* _vracache() {
    pthread_once(&bufferKeyOnce, CreateBufferKey);
    void* block = pthread_getspecific(bufferKey);
    if (block == nullptr) {
        block = std::malloc(static_cast<size_t>(_vrncache()) * 3 / 2 + 4095);
        if (block == nullptr) return nullptr;
        pthread_setspecific(bufferKey, block);
    }
    auto address = (reinterpret_cast<uintptr_t>(block) + 4095) & ~uintptr_t{4095};
    return reinterpret_cast<void*>(address);
}
