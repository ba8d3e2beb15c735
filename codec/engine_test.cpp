// Every instruction set and both host byte orders, on this machine, through the same mill as the exported converters.
#include "codec/isa_scalar.h"
#include "codec/kernels.h"
#include "codec/witness/comparison.h"

#include "codec/message.h"

namespace ribkit::codec {

#ifdef RIBKIT_HAS_AVX2
extern const kernel_table avx2_big_kernels, avx2_little_kernels;
#endif

namespace {

struct variant {
    const char *name;
    const kernel_table *kernels;
    witness::order host;
};

constexpr kernel_table scalar_big = all_layouts::kernels<scalar, std::endian::big>();
constexpr kernel_table scalar_little = all_layouts::kernels<scalar, std::endian::little>();

#ifdef __aarch64__
constexpr kernel_table neon_big = all_layouts::kernels<neon, std::endian::big>();
constexpr kernel_table neon_little = all_layouts::kernels<neon, std::endian::little>();
#endif

std::vector<variant> variants() {
    std::vector<variant> all{{"scalar_big", &scalar_big, witness::order::big},
                             {"scalar_little", &scalar_little, witness::order::little}};
#ifdef RIBKIT_HAS_AVX2
    if (__builtin_cpu_supports("avx2")) {
        all.push_back({"avx2_big", &avx2_big_kernels, witness::order::big});
        all.push_back({"avx2_little", &avx2_little_kernels, witness::order::little});
    }
#endif
#ifdef __aarch64__
    all.push_back({"neon_big", &neon_big, witness::order::big});
    all.push_back({"neon_little", &neon_little, witness::order::little});
#endif
    return all;
}

class engine : public ::testing::TestWithParam<variant> {
  protected:
    static constexpr unsigned rounds = RIBKIT_EMULATED ? 10 : 100;

    /// Both directions of every message of the catalogue.
    static void for_each_converter(const std::function<void(const witness::subject &)> &examine) {
        for (const message &m : messages()) {
            const witness::pair *model = witness::find_pair(m.name);
            ASSERT_NE(model, nullptr) << m.name;
            const kernel &k = (*GetParam().kernels)[m.kernel];
            examine({model, witness::direction::hton, GetParam().host, bytewise(k.to_network)});
            examine({model, witness::direction::ntoh, GetParam().host, bytewise(k.to_host)});
        }
    }

  private:
    static std::function<uint32_t(const void *, void *)> bytewise(uint32_t (*convert)(const uint8_t *, uint8_t *)) {
        return [convert](const void *src, void *dst) {
            return convert(static_cast<const uint8_t *>(src), static_cast<uint8_t *>(dst));
        };
    }
};

TEST_P(engine, agrees_with_the_naive_converters) {
    for_each_converter([](const witness::subject &s) { EXPECT_TRUE(witness::agrees_at_random(s, rounds)); });
}

TEST_P(engine, touches_nothing_beyond_the_message) {
    for_each_converter([](const witness::subject &s) { EXPECT_TRUE(witness::agrees_at_the_edge(s, rounds / 5)); });
}

TEST_P(engine, agrees_with_golden_vectors) {
    const std::vector<witness::golden> goldens = witness::load_goldens(RIBKIT_SOURCE_DIR "/codec/witness/golden");
    for_each_converter([&](const witness::subject &s) {
        for (const witness::golden &vector : goldens) {
            if (vector.message == s.model->name) {
                EXPECT_TRUE(witness::agrees_with_golden(s, vector));
            }
        }
    });
}

INSTANTIATE_TEST_SUITE_P(variants, engine, ::testing::ValuesIn(variants()),
                         [](const auto &v) { return std::string(v.param.name); });

} // namespace
} // namespace ribkit::codec
