#include "headboard/name_list.h"
#include "headboard/register_names.h"

namespace {

void addMatrices(NameList& list, std::string const& prefix) {
    list.addNumbered(prefix + "AWB_CCM_L_", 11);
    list.addNumbered(prefix + "AWB_CCM_RL_", 11);
}

void addLimits(NameList& list) {
    list.add({"AWB_GAIN_BUFFER_SPEED", "AWB_JUMP_DIVISOR", "AWB_GAIN_MIN", "AWB_GAIN_MAX",
              "AWB_CCM_POSITION_MIN", "AWB_CCM_POSITION_MAX", "AWB_STEADY_BGAIN_OUT_MIN",
              "AWB_STEADY_BGAIN_OUT_MAX", "AWB_STEADY_BGAIN_IN_MIN", "AWB_STEADY_BGAIN_IN_MAX",
              "AWB_CNT_PXL_TH", "AWB_TG_MIN0", "AWB_TG_MAX0"});
}

void addTwoIlluminants(NameList& list) {
    for (char const* const side : {"AWB_LEFT_CCM_", "AWB_RIGHT_CCM_"}) {
        std::string const prefix = side;
        list.addNumbered(prefix, 9);
        list.add({prefix + "R2BRATIO"});
    }
}

// The left matrix has its place among the ones with a prefix.
void addThreeIlluminants(NameList& list) {
    list.addNumbered("CAM_AWB_CCM_M_", 9);
    list.addNumbered("CAM_AWB_CCM_R_", 9);
    for (char const* const side : {"L", "M", "R"})
        for (char const* const gain : {"_RG_GAIN", "_BG_GAIN"})
            list.add({std::string("CAM_AWB_CCM_") + side + gain});
    for (char const* const side : {"L", "M", "R"})
        list.add({std::string("CAM_AWB_CCM_") + side + "_CTEMP"});
}

void addTracking(NameList& list) {
    for (char const* const data : {"0", "1", "2"})
        list.addNumbered(std::string("AWBTRACKCONFIG_CCMDATA_") + data + "_MATRIX_", 9);
    for (char const* const value : {"_RBRATIO", "_COLORTEMP"})
        for (char const* const data : {"0", "1", "2"})
            list.add({std::string("AWBTRACKCONFIG_CCMDATA_") + data + value});
}

std::vector<std::string> makeNames() {
    NameList list;
    addMatrices(list, "");
    addLimits(list);
    for (char const* const prefix : {"PRI_A_CONFIG_", "PRI_B_CONFIG_", "SEC_A_CONFIG_", "SEC_B_CONFIG_",
                                     "CAM_", "CAM1_", "CAM2_", "BIN_ON_CONFIG_", "BIN_OFF_CONFIG_"})
        addMatrices(list, prefix);
    addTwoIlluminants(list);
    addThreeIlluminants(list);
    addTracking(list);
    return list.names();
}

} // namespace

std::vector<std::string> const& ccmRegisterNames() {
    static std::vector<std::string> const names = makeNames();
    return names;
}
