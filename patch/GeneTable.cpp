#include "patch/GeneTable.h"

const GeneInfo GENE_TABLE[GENE_COUNT] = {
    {"env_time", 0}, {"env_loop", 0}, {"env_tilt", 0}, {"vol_atk", 0},  {"vol_dcy", 0},
    {"vol_sus", 0},  {"mod_atk", 0},  {"mod_dcy", 0},  {"mod_sh", 0},   {"mod_vel", 6},
    {"lfo_rate", 0}, {"lfo_amt", 0},  {"lfo_bal", 0},  {"a_form", 0},   {"a_noise", 0},
    {"a_color", 0},  {"a_freq", 0},   {"a_mod", 0},    {"b_form", 0},   {"b_noise", 0},
    {"b_freq", 0},   {"b_mod", 0},    {"b_sh", 0},     {"fm_amt", 0},   {"fm_mod", 0},
    {"sub_am", 3},   {"balance", 0},  {"flt_freq", 0}, {"flt_mod", 0},  {"flt_sep", 0},
    {"flt_q", 0},    {"flt_kf", 4},   {"fx_mix", 0},   {"fx_len", 0},   {"fx_damp", 0},
    {"fx_chors", 0}, {"fx_size", NEVER_MUTATES},
};

int findGene(std::string_view name) {
    for (int i = 0; i < GENE_COUNT; ++i) {
        if (GENE_TABLE[i].name == name) return i;
    }
    return -1;
}
