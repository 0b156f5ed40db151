// The 37 genes of the genome: their names (the keys of the patch text, the
// script object and the DNA view) and the first implementation in which each
// takes part in branch growing.
#pragma once

#include <cstdint>
#include <string_view>

constexpr int GENE_COUNT = 37;
// Genes 0 to 35 mutate on the branches; fx_size (36) never does, since
// changing it would disrupt the audio.
constexpr int MUTABLE_GENE_COUNT = 36;

// Gene indices, named as the genes are: Gene::a_freq, Gene::fx_size...
namespace Gene {
enum : int {
    env_time, env_loop, env_tilt, vol_atk, vol_dcy, vol_sus, mod_atk, mod_dcy, mod_sh, mod_vel,
    lfo_rate, lfo_amt, lfo_bal, a_form, a_noise, a_color, a_freq, a_mod, b_form, b_noise,
    b_freq, b_mod, b_sh, fm_amt, fm_mod, sub_am, balance, flt_freq, flt_mod, flt_sep,
    flt_q, flt_kf, fx_mix, fx_len, fx_damp, fx_chors, fx_size
};
}  // namespace Gene

struct GeneInfo {
    std::string_view name;
    // First implementation whose branches mutate this gene; NEVER_MUTATES for fx_size.
    int32_t since;
};

constexpr int32_t NEVER_MUTATES = 0x7FFFFFFF;

extern const GeneInfo GENE_TABLE[GENE_COUNT];

// The index of the gene of that name (exact, case-sensitive), or -1.
int findGene(std::string_view name);
