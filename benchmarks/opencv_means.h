#pragma once

#include <opencv2/core.hpp>
#include <vector>

/// Rectangles of a picture that are averaged: a grid, ascending row by row.
struct Blocks {
    std::vector<cv::Rect> rectangles;
    cv::Size grid; ///< columns and rows
};

/// OpenCV's ways to the mean colours of blocks. Buffers are kept between calls; the means are left in
/// `means`.
class OpencvMeans {
public:
    explicit OpencvMeans(Blocks blocks);

    /// One mean a block.
    void byMean(cv::Mat const& picture);
    /// The area that the blocks span, scaled down to one pixel a block. The means are rounded to whole
    /// counts, and where the blocks do not tile the area they are those of nearly the same blocks.
    void byResize(cv::Mat const& picture);
    /// Differences of a sum table, which is exact modulo 2^32.
    void byIntegral(cv::Mat const& picture);

    [[nodiscard]] std::vector<cv::Scalar> const& means() const { return m_means; }

private:
    Blocks const m_blocks;
    cv::Rect m_area;
    cv::Mat m_small;
    cv::Mat m_sums;
    std::vector<cv::Scalar> m_means;
};
