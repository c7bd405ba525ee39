#include "benchmarks/opencv_means.h"

#include <opencv2/imgproc.hpp>
#include <utility>

OpencvMeans::OpencvMeans(Blocks blocks) : m_blocks(std::move(blocks)), m_means(m_blocks.rectangles.size()) {
    for (cv::Rect const& block : m_blocks.rectangles)
        m_area |= block;
}

void OpencvMeans::byMean(cv::Mat const& picture) {
    for (size_t i = 0; i < m_means.size(); ++i)
        m_means[i] = cv::mean(picture(m_blocks.rectangles[i]));
}

void OpencvMeans::byResize(cv::Mat const& picture) {
    cv::resize(picture(m_area), m_small, m_blocks.grid, 0, 0, cv::INTER_AREA);
    for (size_t i = 0; i < m_means.size(); ++i)
        m_means[i] = cv::Scalar(m_small.at<cv::Vec4b>(int(i) / m_small.cols, int(i) % m_small.cols));
}

void OpencvMeans::byIntegral(cv::Mat const& picture) {
    cv::integral(picture(m_area), m_sums, CV_32S);
    auto const sumAt = [this](int x, int y) { return m_sums.at<cv::Vec4i>(y - m_area.y, x - m_area.x); };
    for (size_t i = 0; i < m_means.size(); ++i) {
        cv::Rect const& block = m_blocks.rectangles[i];
        int const right = block.x + block.width;
        int const bottom = block.y + block.height;
        for (int channel = 0; channel < 4; ++channel) {
            auto const corner = [&](int x, int y) { return uint32_t(sumAt(x, y)[channel]); };
            uint32_t const sum = corner(right, bottom) - corner(block.x, bottom) - corner(right, block.y) +
                                 corner(block.x, block.y);
            m_means[i][channel] = double(sum) / block.area();
        }
    }
}
