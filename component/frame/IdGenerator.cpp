#include "IdGenerator.h"

#include <atomic>
#include <ctime>

namespace {
uint32_t gnGenerateur = 0;
std::atomic<uint16_t> gnCompteur{0};

uint32_t nTickMilli() {
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<uint32_t>(ts.tv_sec * 1000u + ts.tv_nsec / 1000000);
}
} // namespace

void gInitGenerator(uint32_t eGenerateur) { gnGenerateur = eGenerateur; }

uint64_t gqwGenerateNewID() {
    uint32_t nHaut = (static_cast<uint32_t>(time(nullptr)) & 0x0FFFFFFFu) + gnGenerateur;
    uint16_t nCompteur = static_cast<uint16_t>(gnCompteur.fetch_add(1, std::memory_order_relaxed) + 1);
    return (static_cast<uint64_t>(nHaut) << 32) | (static_cast<uint64_t>(nCompteur) << 16) |
           (nTickMilli() & 0xFFFFu);
}
