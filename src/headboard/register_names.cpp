#include "headboard/register_names.h"

#include <initializer_list>

namespace kestra {

namespace {

// A list of register names that grows by patterns.
class NameList {
public:
    void add(std::initializer_list<std::string> names) { m_names.insert(m_names.end(), names); }

    /// `prefix` with each number from 0 to `count` - 1, of at least `digits` digits.
    void addNumbered(std::string const& prefix, int count, size_t digits = 1) {
        for (int i = 0; i < count; ++i) {
            std::string number = std::to_string(i);
            if (number.size() < digits)
                number.insert(0, digits - number.size(), '0');
            m_names.push_back(prefix + number);
        }
    }

    [[nodiscard]] std::vector<std::string> const& names() const { return m_names; }

private:
    std::vector<std::string> m_names;
};

// Polynomial coefficients of planes that share a colour, position by position.
void addCoefficients(NameList& list, std::initializer_list<std::string> planes) {
    for (char p = '0'; p < '5'; ++p)
        for (char q = '0'; q < '5'; ++q)
            for (std::string const& plane : planes)
                list.add({"P_" + plane + "_P" + p + "Q" + q});
}

void addPolynomial(NameList& list) {
    addCoefficients(list, {"GR", "G1", "CR"});
    addCoefficients(list, {"RD", "R"});
    addCoefficients(list, {"BL", "B"});
    addCoefficients(list, {"GB", "G2", "CB"});
    list.add({"POLY_ORIGIN_C", "CENTER_ROW", "POLY_ORIGIN_R", "CENTER_COLUMN"});
}

void addSingleTable(NameList& list) {
    list.addNumbered("PGATABLE_DATA_", 100, 3);
    list.add({"PGATABLE_CENTERROW", "PGATABLE_CENTERCOLUMN"});
    list.add({"P_GR_Q5", "P_CR_Q5", "P_RD_Q5", "P_BL_Q5", "P_GB_Q5", "P_CB_Q5"});
}

void addIlluminantSetups(NameList& list) {
    for (char const* const side : {"L", "M", "R"}) {
        std::string const prefix = std::string("CAM_PGA_") + side + "_CONFIG_";
        list.add({prefix + "COLOUR_TEMP", prefix + "GREEN_RED_Q14", prefix + "RED_Q14",
                  prefix + "GREEN_BLUE_Q14", prefix + "BLUE_Q14"});
    }
    for (char const* const side : {"LEFT", "MIDDLE", "RIGHT"}) {
        std::string const prefix = std::string("PGASETUP_") + side + "_";
        list.add({prefix + "COLORTEMP", prefix + "GREENREDQ14", prefix + "REDQ14", prefix + "GREENBLUEQ14",
                  prefix + "BLUEQ14"});
    }
}

struct ZoneGroup {
    char const* colour;
    char const* shortColour;
    char const* cornerFactors;
};
// The corner factors of the last two groups are crossed, deliberately: it only decides where they stand in a
// record.
constexpr ZoneGroup kZoneGroups[] = {
    {"RED", "R", "R"}, {"GREEN", "G1", "G1"}, {"BLUE", "B", "G2"}, {"GREEN2", "G2", "B"}};

void addZones(NameList& list) {
    list.add({"LENS_CORRECTION_CONTROL", "ZONE_BOUNDS_X1_X2", "ZONE_BOUNDS_X0_X3", "ZONE_BOUNDS_X4_X5",
              "ZONE_BOUNDS_Y1_Y2", "ZONE_BOUNDS_Y0_Y3", "ZONE_BOUNDS_Y4_Y5", "CENTER_OFFSET", "ZONE_X1Y1",
              "ZONE_X2Y2", "ZONE_X3Y3", "ZONE_CXCY", "ZONE_X4Y4", "ZONE_X5Y5", "ZONE_X6Y6"});
    for (ZoneGroup const& group : kZoneGroups) {
        std::string const colour = group.colour;
        for (char const* const prefix : {"FX_", "FY_", "DF_DX_", "DF_DY_"})
            list.add({prefix + colour});
        for (char zone = '0'; zone < '8'; ++zone)
            list.add({std::string("SECOND_DERIV_ZONE_") + zone + "_" + colour});
        for (char const* const corner : {"_TL", "_TR", "_BL", "_BR"})
            list.add({std::string("K_FACTOR_IN_K_FX_FY_") + group.shortColour + corner});
        list.addNumbered(std::string("LENS_K_FACTOR_") + group.shortColour + "_Q", 4);
        for (char const* const prefix : {"CF_12_", "CF_34_"})
            list.add({std::string(prefix) + group.cornerFactors});
    }
    list.add({"X2_FACTORS", "GLOBAL_OFFSET_FXY_FUNCTION", "K_FACTOR_IN_K_FX_FY", "CORNER_FACTOR_CONTROL"});
}

void addIlluminantTables(NameList& list) {
    for (char const* const table : {"PGATABLEA_", "PGATABLED65_", "PGATABLECWF_"}) {
        std::string const prefix = table;
        list.addNumbered(prefix + "DATA_", 100, 3);
        list.add({prefix + "CENTERROW", prefix + "CENTERCOLUMN"});
    }
    // The next generation of sensors counts without leading zeros and names the column first.
    for (char const* const table : {"PGA_TABLE_A_", "PGA_TABLE_CWF_", "PGA_TABLE_D65_"}) {
        std::string const prefix = table;
        list.addNumbered(prefix + "DATA_", 100);
        list.add({prefix + "CENTER_COLUMN", prefix + "CENTER_ROW"});
    }
}

std::vector<std::string> listShadingNames() {
    NameList list;
    addPolynomial(list);
    addSingleTable(list);
    addIlluminantSetups(list);
    addZones(list);
    addIlluminantTables(list);
    return list.names();
}

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

std::vector<std::string> listCcmNames() {
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

std::vector<std::string> const& shadingRegisterNames() {
    static std::vector<std::string> const names = listShadingNames();
    return names;
}

std::vector<std::string> const& ccmRegisterNames() {
    static std::vector<std::string> const names = listCcmNames();
    return names;
}

} // namespace kestra
