// Seeded mutations of good inputs: every run sees the same ones.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "properties.h"
#include "support/ansi.h"

using namespace caixora;

namespace {

constexpr int kRounds = 20000;

class Mutator {
 public:
  explicit Mutator(std::vector<std::string> seeds) : seeds_(std::move(seeds)) {}

  std::string Next() {
    std::string bytes = seeds_[Below(seeds_.size())];
    for (std::size_t edits = Below(8); edits-- > 0;) {
      const std::size_t at = Below(bytes.size() + 1);
      switch (Below(5)) {
        case 0: bytes.insert(at, 1, static_cast<char>(Below(256))); break;
        case 1: bytes.erase(at, Below(12)); break;
        case 2: bytes.insert(at, Pick()); break;
        case 3: bytes.insert(at, std::string(Below(400), static_cast<char>(Below(256)))); break;
        default:
          if (at < bytes.size()) bytes[at] = static_cast<char>(bytes[at] ^ (1 << Below(8)));
      }
    }
    return bytes;
  }

 private:
  std::size_t Below(std::size_t bound) { return random_() % bound; }
  std::string Pick() {
    static const std::string kPieces[] = {"\r\n", "\n", "\r", "\x1A", std::string(1, '\0'), "=", ";", "%%", "%s%n", "029-001", "030-000 = ",
                                          "|", "\xAC", "-", "DETALHADO", "CAMINHO=", "1e5", ",", "009-000 = 99999999999\n", "a\xC3\xE3"};
    return kPieces[Below(std::size(kPieces))];
  }
  std::vector<std::string> seeds_;
  std::mt19937_64 random_{20240307};
};

template <class Check>
void Mutate(Check check, std::vector<std::string> seeds) {
  Mutator mutator(std::move(seeds));
  for (int i = 0; i < kRounds; ++i) ASSERT_NO_THROW(check(mutator.Next()));
}

TEST(Mutation, Answers) {
  Mutate(CheckAnswer,
      {"000-000 = CRT\r\n001-000 = 17\r\n003-000 = 1250\r\n009-000 = 0\r\n010-000 = REDE\r\n010-001 = 5\r\n012-000 = 123\r\n018-000 = 2\r\n"
       "028-000 = 2\r\n029-001 = LOJA\r\n029-002 = TOTAL\r\n030-000 = aprova\xE7\xE3o\r\n040-000 = B\r\n504-001 = N\r\n640-000 = 9\r\n999-999 = 0",
       "009-000 = 5\n030-000 = TRANSA\xC7\xC3O NEGADA\n", ""});
}

TEST(Mutation, Requests) {
  const std::string head("\x16\x02\x11\0\0\0\x01\0\0\0\0\0\0\x29\x40", 15);  // code 22, 2 items, 12.5
  std::string fleet = head;
  fleet[0] = 25;
  const std::vector<std::string> seeds = {head + std::string(u8"7891¬CAFE¬2¬10,50¬0¬21,00|x¬y¬1¬4.99¬0¬4.99"_ansi),
                                          fleet + "a-b-c-d-e-f|g" + std::string(1, '\0') + "12.345.678/0001-95", std::string(6, '\0') + "\x01" + std::string(8, '\0')};
  for (const std::string& seed : seeds) EXPECT_TRUE(CheckRequest(seed)) << "a good call was refused";
  Mutate(CheckRequest, seeds);
}

TEST(Mutation, Texts) {
  Mutate(CheckTexts, {"CAMINHO=C:\\Trevix\r\nOUTRA=1\r\n", "DETALHADO\r\n", "100%% de %s\r%n", ""});
}

}  // namespace
