#pragma once

// What a JPEG stores, read with libjpeg without decoding to pixels: each component's 8 x 8
// blocks of DCT coefficients, multiplied by their quantisation steps. Two files whose blocks are
// equal here decode to the same picture; a lossless turn moves these blocks and their
// coefficients and changes no value.

#include <QByteArray>

#include <array>
#include <cstdio>
#include <vector>

#include <jpeglib.h>

struct JpegCoefficients {
    struct Plane {
        int widthInBlocks = 0;
        int heightInBlocks = 0;
        std::vector<std::array<int, 64>> blocks; // row by row; coefficients [v * 8 + u]
        const std::array<int, 64>& at(int x, int y) const {
            return blocks[size_t(y * widthInBlocks + x)];
        }
        bool operator==(const Plane&) const = default;
    };
    std::vector<Plane> planes;

    static JpegCoefficients read(const QByteArray& jpeg) {
        JpegCoefficients result;
        jpeg_decompress_struct info{};
        jpeg_error_mgr errors{};
        info.err = jpeg_std_error(&errors);
        jpeg_create_decompress(&info);
        jpeg_mem_src(&info, reinterpret_cast<const unsigned char*>(jpeg.constData()),
                     static_cast<unsigned long>(jpeg.size()));
        jpeg_read_header(&info, TRUE);
        jvirt_barray_ptr* arrays = jpeg_read_coefficients(&info);
        for (int c = 0; c < info.num_components; ++c) {
            const jpeg_component_info& component = info.comp_info[c];
            // The blocks that hold the picture; libjpeg may pad a plane to whole MCUs.
            Plane plane;
            plane.widthInBlocks =
                int((info.image_width * component.h_samp_factor + info.max_h_samp_factor * 8 - 1) /
                    (info.max_h_samp_factor * 8));
            plane.heightInBlocks =
                int((info.image_height * component.v_samp_factor + info.max_v_samp_factor * 8 - 1) /
                    (info.max_v_samp_factor * 8));
            const JQUANT_TBL* steps = component.quant_table;
            for (int y = 0; y < plane.heightInBlocks; ++y) {
                JBLOCKARRAY row = (*info.mem->access_virt_barray)(
                    reinterpret_cast<j_common_ptr>(&info), arrays[c], JDIMENSION(y), 1, FALSE);
                for (int x = 0; x < plane.widthInBlocks; ++x) {
                    std::array<int, 64> block{};
                    for (int k = 0; k < 64; ++k)
                        block[size_t(k)] = int(row[0][x][k]) * int(steps->quantval[k]);
                    plane.blocks.push_back(block);
                }
            }
            result.planes.push_back(std::move(plane));
        }
        jpeg_finish_decompress(&info);
        jpeg_destroy_decompress(&info);
        return result;
    }

    // These coefficients as a picture turned a quarter clockwise (quarterTurns 1), anticlockwise
    // (-1), or mirrored left to right (mirrorX) or top to bottom (mirrorY) would store them. A
    // mirrored axis negates its odd frequencies; a quarter turn swaps the axes.
    JpegCoefficients transformed(int quarterTurns, bool mirrorX, bool mirrorY) const {
        JpegCoefficients out;
        for (const Plane& source : planes) {
            Plane plane;
            const bool swaps = quarterTurns != 0;
            plane.widthInBlocks = swaps ? source.heightInBlocks : source.widthInBlocks;
            plane.heightInBlocks = swaps ? source.widthInBlocks : source.heightInBlocks;
            for (int by = 0; by < plane.heightInBlocks; ++by)
                for (int bx = 0; bx < plane.widthInBlocks; ++bx) {
                    int sx = bx, sy = by;
                    if (quarterTurns == 1) { // clockwise: out x runs up the source's y
                        sx = by;
                        sy = source.heightInBlocks - 1 - bx;
                    } else if (quarterTurns == -1) {
                        sx = source.widthInBlocks - 1 - by;
                        sy = bx;
                    }
                    if (mirrorX)
                        sx = source.widthInBlocks - 1 - bx;
                    if (mirrorY)
                        sy = source.heightInBlocks - 1 - by;
                    const std::array<int, 64>& from = source.at(sx, sy);
                    std::array<int, 64> block{};
                    for (int v = 0; v < 8; ++v)
                        for (int u = 0; u < 8; ++u) {
                            int value = 0;
                            if (quarterTurns == 1)
                                value = from[size_t(u * 8 + v)] * ((u & 1) ? -1 : 1);
                            else if (quarterTurns == -1)
                                value = from[size_t(u * 8 + v)] * ((v & 1) ? -1 : 1);
                            else
                                value = from[size_t(v * 8 + u)] * ((mirrorX && (u & 1)) ? -1 : 1) *
                                        ((mirrorY && (v & 1)) ? -1 : 1);
                            block[size_t(v * 8 + u)] = value;
                        }
                    plane.blocks.push_back(block);
                }
            out.planes.push_back(std::move(plane));
        }
        return out;
    }

    bool operator==(const JpegCoefficients&) const = default;
};
