#pragma once

#include <cstdint>
#include <random>
#include <string>

/// `content` after one to four random changes: bytes replaced, cut out, repeated or copied.
inline std::string mutated(std::string content, std::uint32_t seed) {
    std::mt19937 random(seed);
    const int nbChanges = 1 + static_cast<int>(random() % 4);
    for (int change = 0; change < nbChanges; ++change) {
        const std::size_t at = random() % content.size();
        switch (random() % 4) {
            case 0:
                content[at] = static_cast<char>(random() % 256);
                break;
            case 1:
                content.erase(at, 1 + random() % 8);
                break;
            case 2:
                content.insert(at, content.substr(random() % content.size(), random() % 40));
                break;
            default:
                content[at] = content[random() % content.size()];
                break;
        }
        if (content.empty()) content = "x";
    }
    return content;
}
