#include "headboard/register_names.h"

#include <QString>
#include <sstream>

namespace kestra {
namespace {
using Names = std::vector<std::string>;

void addChoices(std::string const& element, Names& choices) {
    size_t const dots = element.find("..");
    if (dots == std::string::npos)
        return choices.push_back(element);
    size_t const text = element.find_last_not_of("0123456789", dots - 1) + 1;
    int const last = std::stoi(element.substr(dots + 2));
    for (int i = std::stoi(element.substr(text)); i <= last; ++i) {
        QString const digits = QString::number(i).rightJustified(int(dots - text), QLatin1Char('0'));
        choices.push_back(element.substr(0, text) + digits.toStdString());
    }
}

// Polynomial coefficients: planes that share a colour, position by position.
constexpr char const* kCoefficientPlanes[] = {"P_{GR,G1,CR}_", "P_{RD,R}_", "P_{BL,B}_", "P_{GB,G2,CB}_"};

constexpr char const* kShading[] = {
    "{POLY_ORIGIN_C,CENTER_ROW,POLY_ORIGIN_R,CENTER_COLUMN}",
    "PGATABLE_{DATA_000..099,CENTERROW,CENTERCOLUMN}",
    "P_{GR,CR,RD,BL,GB,CB}_Q5",
    "CAM_PGA_{L,M,R}_CONFIG_{COLOUR_TEMP,GREEN_RED_Q14,RED_Q14,GREEN_BLUE_Q14,BLUE_Q14}",
    "PGASETUP_{LEFT,MIDDLE,RIGHT}_{COLORTEMP,GREENREDQ14,REDQ14,GREENBLUEQ14,BLUEQ14}",
    "LENS_CORRECTION_CONTROL",
    "ZONE_BOUNDS_{X1_X2,X0_X3,X4_X5,Y1_Y2,Y0_Y3,Y4_Y5}",
    "CENTER_OFFSET",
    "ZONE_{X1Y1,X2Y2,X3Y3,CXCY,X4Y4,X5Y5,X6Y6}",
    "{FX,FY,DF_DX,DF_DY,SECOND_DERIV_ZONE_0..7}_RED",
    "K_FACTOR_IN_K_FX_FY_R_{TL,TR,BL,BR}",
    "LENS_K_FACTOR_R_Q{0..3}",
    "CF_{12,34}_R",
    "{FX,FY,DF_DX,DF_DY,SECOND_DERIV_ZONE_0..7}_GREEN",
    "K_FACTOR_IN_K_FX_FY_G1_{TL,TR,BL,BR}",
    "LENS_K_FACTOR_G1_Q{0..3}",
    "CF_{12,34}_G1",
    // The corner factors of blue and the second green are crossed, deliberately: it only decides where they
    // stand in a record.
    "{FX,FY,DF_DX,DF_DY,SECOND_DERIV_ZONE_0..7}_BLUE",
    "K_FACTOR_IN_K_FX_FY_B_{TL,TR,BL,BR}",
    "LENS_K_FACTOR_B_Q{0..3}",
    "CF_{12,34}_G2",
    "{FX,FY,DF_DX,DF_DY,SECOND_DERIV_ZONE_0..7}_GREEN2",
    "K_FACTOR_IN_K_FX_FY_G2_{TL,TR,BL,BR}",
    "LENS_K_FACTOR_G2_Q{0..3}",
    "CF_{12,34}_B",
    "{X2_FACTORS,GLOBAL_OFFSET_FXY_FUNCTION,K_FACTOR_IN_K_FX_FY,CORNER_FACTOR_CONTROL}",
    "PGATABLE{A,D65,CWF}_{DATA_000..099,CENTERROW,CENTERCOLUMN}",
    // The next generation of sensors counts without leading zeros and names the column first.
    "PGA_TABLE_{A,CWF,D65}_{DATA_0..99,CENTER_COLUMN,CENTER_ROW}",
};

// Of three illuminants, the left matrix has its place among the ones with a prefix.
constexpr char const* kColourCorrection[] = {
    "AWB_CCM_{L,RL}_{0..10}",
    "AWB_{GAIN_BUFFER_SPEED,JUMP_DIVISOR,GAIN_MIN,GAIN_MAX,CCM_POSITION_MIN,CCM_POSITION_MAX}",
    "AWB_STEADY_BGAIN_{OUT,IN}_{MIN,MAX}",
    "AWB_{CNT_PXL_TH,TG_MIN0,TG_MAX0}",
    "{PRI,SEC}_{A,B}_CONFIG_AWB_CCM_{L,RL}_{0..10}",
    "{CAM,CAM1,CAM2,BIN_ON_CONFIG,BIN_OFF_CONFIG}_AWB_CCM_{L,RL}_{0..10}",
    "AWB_{LEFT,RIGHT}_CCM_{0..8,R2BRATIO}",
    "CAM_AWB_CCM_{M,R}_{0..8}",
    "CAM_AWB_CCM_{L,M,R}_{RG,BG}_GAIN",
    "CAM_AWB_CCM_{L,M,R}_CTEMP",
    "AWBTRACKCONFIG_CCMDATA_{0..2}_MATRIX_{0..8}",
    "AWBTRACKCONFIG_CCMDATA_{0..2}_RBRATIO",
    "AWBTRACKCONFIG_CCMDATA_{0..2}_COLORTEMP",
};
} // namespace

void expandNames(std::string const& pattern, Names& names) {
    size_t const open = pattern.find('{');
    if (open == std::string::npos)
        return names.push_back(pattern);
    size_t const close = pattern.find('}');
    std::istringstream list(pattern.substr(open + 1, close - open - 1));
    Names choices;
    for (std::string element; std::getline(list, element, ',');)
        addChoices(element, choices);
    for (std::string const& choice : choices)
        expandNames(pattern.substr(0, open) + choice + pattern.substr(close + 1), names);
}

Names const& shadingRegisterNames() {
    static Names const names = [] {
        Names positions, list;
        expandNames("P{0..4}Q{0..4}", positions);
        for (std::string const planes : kCoefficientPlanes)
            for (std::string const& position : positions)
                expandNames(planes + position, list);
        for (char const* const pattern : kShading)
            expandNames(pattern, list);
        return list;
    }();
    return names;
}

Names const& ccmRegisterNames() {
    static Names const names = [] {
        Names list;
        for (char const* const pattern : kColourCorrection)
            expandNames(pattern, list);
        return list;
    }();
    return names;
}
} // namespace kestra
