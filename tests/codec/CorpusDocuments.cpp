// Hostile SVG and PDF documents: entity and reference bombs, recursion, giant pages and
// images, broken cross-references. Written as text here, with the PDF offsets computed.

#include "CorpusBytes.h"
#include "HostileCorpus.h"

using namespace CorpusBytes;

namespace {

// ---------------------------------------------------------------- SVG

QByteArray svg(const QByteArray& attributes, const QByteArray& body,
               const QByteArray& doctype = {}) {
    return "<?xml version=\"1.0\"?>\n" + doctype +
           "<svg xmlns=\"http://www.w3.org/2000/svg\" "
           "xmlns:xlink=\"http://www.w3.org/1999/xlink\" " +
           attributes + ">\n" + body + "\n</svg>\n";
}

const QByteArray kSmall = "width=\"64\" height=\"48\"";

QByteArray billionLaughs() {
    QByteArray dtd = "<!DOCTYPE svg [\n<!ENTITY lol0 \"lol\">\n";
    for (int i = 1; i < 10; ++i) {
        dtd += "<!ENTITY lol" + QByteArray::number(i) + " \"";
        for (int k = 0; k < 10; ++k)
            dtd += "&lol" + QByteArray::number(i - 1) + ";";
        dtd += "\">\n";
    }
    dtd += "]>\n";
    return svg(kSmall, "<text x=\"0\" y=\"20\">&lol9;</text>", dtd);
}

// Ten levels of ten references each: ten billion rectangles when drawn.
QByteArray useBomb() {
    QByteArray body = "<defs>\n<rect id=\"l0\" width=\"1\" height=\"1\" fill=\"red\"/>\n";
    for (int level = 1; level <= 10; ++level) {
        body += "<g id=\"l" + QByteArray::number(level) + "\">";
        for (int k = 0; k < 10; ++k)
            body += "<use xlink:href=\"#l" + QByteArray::number(level - 1) + "\" x=\"" +
                    QByteArray::number(k) + "\"/>";
        body += "</g>\n";
    }
    return svg(kSmall, body + "</defs>\n<use xlink:href=\"#l10\"/>");
}

QByteArray pngDataUri(quint32 w, quint32 h) {
    return "data:image/png;base64," +
           pngFile(w, h, 2, zlibStream(QByteArray(1 << 20, '\0'))).toBase64();
}

// ---------------------------------------------------------------- PDF

QByteArray stream(const QByteArray& dict, const QByteArray& data) {
    return "<< " + dict + " /Length " + QByteArray::number(data.size()) + " >>\nstream\n" + data +
           "\nendstream";
}

// A document of the given objects, numbered from 1 (1 is the catalogue), with a correct
// cross-reference table.
QByteArray pdfDocument(const QList<QByteArray>& objects) {
    QByteArray b("%PDF-1.7\n%\xE2\xE3\xCF\xD3\n");
    QList<qsizetype> offsets;
    for (qsizetype i = 0; i < objects.size(); ++i) {
        offsets << b.size();
        b += QByteArray::number(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const qsizetype xref = b.size();
    b += "xref\n0 " + QByteArray::number(objects.size() + 1) + "\n0000000000 65535 f \n";
    for (qsizetype at : offsets)
        b += QByteArray::number(at).rightJustified(10, '0') + " 00000 n \n";
    b += "trailer\n<< /Size " + QByteArray::number(objects.size() + 1) +
         " /Root 1 0 R >>\nstartxref\n" + QByteArray::number(xref) + "\n%%EOF\n";
    return b;
}

// One page of `mediaBox` drawing `content` with `resources`; further objects start at 5.
QByteArray pdfPage(const QByteArray& mediaBox, const QByteArray& content,
                   const QByteArray& resources = "<< >>", const QList<QByteArray>& more = {},
                   const QByteArray& pageExtra = {}) {
    QList<QByteArray> objects = {"<< /Type /Catalog /Pages 2 0 R >>",
                                 "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
                                 "<< /Type /Page /Parent 2 0 R /MediaBox " + mediaBox +
                                     " /Contents 4 0 R /Resources " + resources + pageExtra + " >>",
                                 stream("", content)};
    return pdfDocument(objects + more);
}

const QByteArray kBox = "[0 0 144 108]";
const QByteArray kImageResources = "<< /XObject << /Im0 5 0 R >> >>";
const QByteArray kDrawImage = "q 144 0 0 108 0 0 cm /Im0 Do Q";

QByteArray imageXObject(quint32 w, quint32 h, const QByteArray& filter, const QByteArray& data,
                        const QByteArray& extra = "/ColorSpace /DeviceRGB /BitsPerComponent 8") {
    return stream("/Type /XObject /Subtype /Image /Width " + QByteArray::number(w) + " /Height " +
                      QByteArray::number(h) + " " + extra +
                      (filter.isEmpty() ? QByteArray() : " /Filter " + filter),
                  data);
}

} // namespace

namespace HostileCorpus {

void addSvgDamage(CorpusWriter& w) {
    auto add = [&](const QString& damage, const QString& label, const QByteArray& bytes) {
        w.add(damage, label, "svg", bytes);
    };
    add("svg-bomb", "svg-billion-laughs", billionLaughs());
    QByteArray quadratic = "<!DOCTYPE svg [<!ENTITY a \"" + QByteArray(50000, 'a') + "\">]>\n";
    add("svg-bomb", "svg-quadratic-blowup",
        svg(kSmall, "<text>" + QByteArray("&a;").repeated(5000) + "</text>", quadratic));
    add("svg-bomb", "svg-nested-use-bomb", useBomb());
    add("svg-bomb", "svg-use-cycle",
        svg(kSmall, "<g id=\"a\"><use xlink:href=\"#b\"/></g><g id=\"b\"><use "
                    "xlink:href=\"#a\"/></g>"));
    add("svg-bomb", "svg-use-self", svg(kSmall, "<use id=\"u\" xlink:href=\"#u\"/>"));
    add("svg-bomb", "svg-pattern-self",
        svg(kSmall, "<defs><pattern id=\"p\" width=\"4\" height=\"4\" "
                    "patternUnits=\"userSpaceOnUse\"><rect width=\"4\" height=\"4\" "
                    "fill=\"url(#p)\"/></pattern></defs><rect width=\"64\" height=\"48\" "
                    "fill=\"url(#p)\"/>"));
    add("svg-bomb", "svg-deep-nesting-20000",
        svg(kSmall, QByteArray("<g>").repeated(20000) + "<rect width=\"8\" height=\"8\"/>" +
                        QByteArray("</g>").repeated(20000)));
    add("svg-bomb", "svg-dash-billion",
        svg(kSmall, "<path d=\"M0 0 L1000000 1000000\" stroke=\"black\" "
                    "stroke-dasharray=\"0.001 0.001\"/>"));
    QByteArray stops;
    for (int i = 0; i < 100000; ++i)
        stops += "<stop offset=\"0.5\" stop-color=\"#123456\"/>";
    add("svg-bomb", "svg-100000-gradient-stops",
        svg(kSmall, "<defs><linearGradient id=\"g\">" + stops +
                        "</linearGradient></defs><rect width=\"64\" height=\"48\" "
                        "fill=\"url(#g)\"/>"));
    QByteArray pathData = "M0 0";
    std::mt19937 gen = rng(141);
    for (int i = 0; i < 20000; ++i)
        pathData += " L" + QByteArray::number(gen() % 64) + " " + QByteArray::number(gen() % 48);
    add("svg-bomb", "svg-20000-segment-path",
        svg(kSmall, "<path d=\"" + pathData + "\" stroke=\"black\" stroke-width=\"0.1\"/>"));

    // Sizes that cannot be drawn.
    add("lying-header", "svg-size-1e9",
        svg("width=\"1e9\" height=\"1e9\"", "<rect width=\"9\" height=\"9\"/>"));
    add("lying-header", "svg-size-100000",
        svg("width=\"100000\" height=\"100000\"", "<rect width=\"9\" height=\"9\"/>"));
    add("lying-header", "svg-size-16000",
        svg("width=\"16000\" height=\"16000\"", "<rect width=\"9\" height=\"9\"/>"));
    add("lying-header", "svg-size-1e400",
        svg("width=\"1e400\" height=\"1e400\"", "<rect width=\"9\" height=\"9\"/>"));
    add("lying-header", "svg-size-negative",
        svg("width=\"-64\" height=\"-48\"", "<rect width=\"9\" height=\"9\"/>"));
    add("lying-header", "svg-size-nan",
        svg("width=\"NaN\" height=\"NaN\"", "<rect width=\"9\" height=\"9\"/>"));
    add("lying-header", "svg-viewbox-zero",
        svg(kSmall + " viewBox=\"0 0 0 0\"", "<rect width=\"9\" height=\"9\"/>"));
    add("lying-header", "svg-viewbox-1e-30",
        svg(kSmall + " viewBox=\"0 0 1e-30 1e-30\"", "<rect width=\"9\" height=\"9\"/>"));
    add("lying-header", "svg-viewbox-only-huge",
        svg("viewBox=\"0 0 1e9 1e9\"", "<rect width=\"9\" height=\"9\"/>"));
    add("lying-header", "svg-font-size-1e9", svg(kSmall, "<text font-size=\"1e9\">x</text>"));
    add("lying-header", "svg-stroke-width-1e30",
        svg(kSmall, "<path d=\"M0 0 C 10 10 20 20 30 0\" stroke=\"red\" stroke-width=\"1e30\"/>"));

    // Things an SVG may point at: devices, files, a giant embedded picture.
    const QByteArray xxe = "<!DOCTYPE svg [<!ENTITY z SYSTEM \"file:///dev/zero\">]>\n";
    add("svg-external", "svg-external-entity-dev-zero", svg(kSmall, "<text>&z;</text>", xxe));
    add("svg-external", "svg-image-dev-zero",
        svg(kSmall, "<image width=\"64\" height=\"48\" xlink:href=\"file:///dev/zero\"/>"));
    add("svg-external", "svg-image-dev-urandom",
        svg(kSmall, "<image width=\"64\" height=\"48\" xlink:href=\"/dev/urandom\"/>"));
    add("svg-external", "svg-image-remote",
        svg(kSmall, "<image width=\"64\" height=\"48\" xlink:href=\"http://192.0.2.1/x.png\"/>"));
    add("bomb", "svg-embedded-png-16000x16000",
        svg(kSmall,
            "<image width=\"64\" height=\"48\" xlink:href=\"" + pngDataUri(16000, 16000) + "\"/>"));
    add("bomb", "svg-embedded-png-65535x65535",
        svg(kSmall,
            "<image width=\"64\" height=\"48\" xlink:href=\"" + pngDataUri(65535, 65535) + "\"/>"));
    add("broken-structure", "svg-unclosed",
        "<svg xmlns=\"http://www.w3.org/2000/svg\" " + kSmall + "><g><rect");
    add("broken-structure", "svg-bad-encoding",
        "<?xml version=\"1.0\" encoding=\"nosuch\"?><svg xmlns=\"http://www.w3.org/2000/svg\" " +
            kSmall + ">\xFF\xFE\xC0\x80</svg>");
    add("broken-structure", "svg-html-named-svg", "<html><body><p>not a drawing</p></body></html>");

    // Compressed: the bombs again, a gigabyte-class inflation, a broken gzip member.
    w.add("svg-bomb", "svgz-billion-laughs", "svgz", gzipStream(billionLaughs()));
    w.add("svg-bomb", "svgz-nested-use-bomb", "svgz", gzipStream(useBomb()));
    w.add("bomb", "svgz-inflates-to-200mb", "svgz",
          gzipStream(svg(kSmall, "<!--" + QByteArray(200 << 20, ' ') + "-->")));
    QByteArray badCrc = gzipStream(svg(kSmall, "<rect width=\"9\" height=\"9\"/>"));
    putLE32(badCrc, badCrc.size() - 8, 0xDEADBEEF);
    w.add("broken-structure", "svgz-bad-crc", "svgz", badCrc);
    QByteArray extra = gzipStream(svg(kSmall, "<rect width=\"9\" height=\"9\"/>"));
    extra[3] = 0x04; // FEXTRA, with a length past the end
    extra.insert(10, QByteArray("\xFF\xFF", 2));
    w.add("broken-structure", "svgz-extra-field-past-end", "svgz", extra);
    w.add("broken-structure", "svgz-random-after-header", "svgz",
          QByteArray("\x1f\x8b\x08\0\0\0\0\0\0\x03", 10) + randomBytes(2000, 142));
}

void addPdfDamage(CorpusWriter& w, const Seed& seed) {
    auto add = [&](const QString& damage, const QString& label, const QByteArray& bytes) {
        w.add(damage, label, "pdf", bytes);
    };
    const QByteArray& pdf = seed.bytes;
    add("valid", "pdf-hand-made", pdfPage(kBox, "1 0 0 rg 0 0 72 108 re f"));

    // Cross-references that lie, are missing or point past the end.
    const qsizetype xref = pdf.lastIndexOf("xref\n");
    if (xref > 0) {
        QByteArray garbage = pdf;
        for (qsizetype i = xref + 5; i < garbage.size() && garbage.mid(i, 7) != "trailer"; ++i)
            if (garbage[i] >= '0' && garbage[i] <= '9')
                garbage[i] = char('0' + (i * 7) % 10);
        add("pdf-xref", "pdf-xref-offsets-scrambled", garbage);
        add("pdf-xref", "pdf-xref-removed", pdf.left(xref) + "%%EOF\n");
        QByteArray count = pdf;
        const qsizetype line = xref + 5;
        const qsizetype eol = count.indexOf('\n', line);
        count.replace(line, eol - line, "0 2147483647");
        add("pdf-xref", "pdf-xref-count-2g", count);
    }
    const qsizetype start = pdf.lastIndexOf("startxref\n");
    if (start > 0) {
        add("pdf-xref", "pdf-startxref-past-end",
            pdf.left(start) + "startxref\n999999999999\n%%EOF\n");
        add("pdf-xref", "pdf-startxref-negative", pdf.left(start) + "startxref\n-5\n%%EOF\n");
        add("pdf-xref", "pdf-startxref-at-itself",
            pdf.left(start) + "startxref\n" + QByteArray::number(start) + "\n%%EOF\n");
    }
    add("pdf-xref", "pdf-xref-stream-huge-size",
        "%PDF-1.7\n1 0 obj\n" +
            stream("/Type /XRef /Size 2147483647 /W [4 4 4] /Index [0 2147483647]",
                   randomBytes(120, 151)) +
            "\nendobj\nstartxref\n9\n%%EOF\n");

    // Pages of every size but a sensible one.
    add("pdf-mediabox", "pdf-mediabox-14400", pdfPage("[0 0 14400 14400]", "0 g 0 0 100 100 re f"));
    add("pdf-mediabox", "pdf-mediabox-1e9", pdfPage("[0 0 1e9 1e9]", "0 g 0 0 100 100 re f"));
    add("pdf-mediabox", "pdf-mediabox-1000000000", pdfPage("[0 0 1000000000 1000000000]", ""));
    add("pdf-mediabox", "pdf-mediabox-negative", pdfPage("[0 0 -144 -108]", "0 g 0 0 9 9 re f"));
    add("pdf-mediabox", "pdf-mediabox-zero", pdfPage("[0 0 0 0]", "0 g 0 0 9 9 re f"));
    add("pdf-mediabox", "pdf-mediabox-inf", pdfPage("[0 0 1e400 1e400]", ""));
    add("pdf-mediabox", "pdf-mediabox-14400x1", pdfPage("[0 0 14400 1]", "0 g 0 0 9 9 re f"));
    add("pdf-mediabox", "pdf-user-unit-75000", pdfPage(kBox, "", "<< >>", {}, " /UserUnit 75000"));
    add("pdf-mediabox", "pdf-rotate-45",
        pdfPage(kBox, "0 g 0 0 9 9 re f", "<< >>", {}, " /Rotate 45"));
    add("pdf-mediabox", "pdf-mediabox-not-numbers", pdfPage("[/a /b (c) <d>]", ""));

    // Images whose dictionaries claim far more than their streams hold.
    const QByteArray deflated = zlibStream(QByteArray(1 << 20, '\0'));
    add("pdf-image-bomb", "pdf-image-100000x100000",
        pdfPage(kBox, kDrawImage, kImageResources,
                {imageXObject(100000, 100000, "/FlateDecode", deflated)}));
    add("pdf-image-bomb", "pdf-image-16000x16000",
        pdfPage(kBox, kDrawImage, kImageResources,
                {imageXObject(16000, 16000, "/FlateDecode", deflated)}));
    add("pdf-image-bomb", "pdf-image-2147483647x1",
        pdfPage(kBox, kDrawImage, kImageResources,
                {imageXObject(2147483647, 1, "/FlateDecode", deflated)}));
    add("pdf-image-bomb", "pdf-image-negative",
        pdfPage(kBox, kDrawImage, kImageResources,
                {imageXObject(0, 0, "", "x", "/BitsPerComponent -8")}));
    add("pdf-image-bomb", "pdf-image-dct-garbage-16000x16000",
        pdfPage(kBox, kDrawImage, kImageResources,
                {imageXObject(16000, 16000, "/DCTDecode", randomBytes(900, 152))}));
    add("pdf-image-bomb", "pdf-image-jpx-garbage",
        pdfPage(kBox, kDrawImage, kImageResources,
                {imageXObject(64, 64, "/JPXDecode", randomBytes(900, 153))}));
    add("pdf-image-bomb", "pdf-image-jbig2-garbage",
        pdfPage(kBox, kDrawImage, kImageResources,
                {imageXObject(64, 64, "/JBIG2Decode", randomBytes(900, 154),
                              "/ColorSpace /DeviceGray /BitsPerComponent 1")}));
    add("pdf-image-bomb", "pdf-image-ccitt-30000x30000",
        pdfPage(kBox, kDrawImage, kImageResources,
                {imageXObject(30000, 30000, "/CCITTFaxDecode", randomBytes(500, 155),
                              "/ColorSpace /DeviceGray /BitsPerComponent 1 /DecodeParms "
                              "<< /K -1 /Columns 30000 /Rows 30000 >>")}));
    add("palette", "pdf-image-indexed-out-of-range",
        pdfPage(kBox, kDrawImage, kImageResources,
                {imageXObject(8, 8, "", QByteArray(64, '\xFF'),
                              "/ColorSpace [/Indexed /DeviceRGB 1 <000000FFFFFF>] "
                              "/BitsPerComponent 8")}));
    add("palette", "pdf-image-indexed-hival-100000",
        pdfPage(kBox, kDrawImage, kImageResources,
                {imageXObject(8, 8, "", QByteArray(64, '\x07'),
                              "/ColorSpace [/Indexed /DeviceRGB 100000 <000000>] "
                              "/BitsPerComponent 8")}));

    // Structures that recurse: page trees, forms, patterns, Type 3 glyphs.
    add("pdf-recursion", "pdf-page-tree-loop",
        pdfDocument({"<< /Type /Catalog /Pages 2 0 R >>",
                     "<< /Type /Pages /Kids [2 0 R 3 0 R] /Count 2 >>",
                     "<< /Type /Pages /Parent 2 0 R /Kids [2 0 R] /Count 1 >>"}));
    add("pdf-recursion", "pdf-page-count-2g",
        pdfDocument({"<< /Type /Catalog /Pages 2 0 R >>",
                     "<< /Type /Pages /Kids [3 0 R] /Count 2147483647 >>",
                     "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 9 9] >>"}));
    add("pdf-recursion", "pdf-form-draws-itself",
        pdfPage(kBox, "/X0 Do", "<< /XObject << /X0 5 0 R >> >>",
                {stream("/Type /XObject /Subtype /Form /BBox [0 0 9 9] /Resources << /XObject "
                        "<< /X0 5 0 R >> >>",
                        "0 0 1 1 re f /X0 Do")}));
    add("pdf-recursion", "pdf-pattern-uses-itself",
        pdfPage(kBox, "/Pattern cs /P0 scn 0 0 144 108 re f", "<< /Pattern << /P0 5 0 R >> >>",
                {stream("/Type /Pattern /PatternType 1 /PaintType 1 /TilingType 1 /BBox [0 0 4 "
                        "4] /XStep 4 /YStep 4 /Resources << /Pattern << /P0 5 0 R >> >>",
                        "/Pattern cs /P0 scn 0 0 4 4 re f")}));
    add("pdf-recursion", "pdf-pattern-step-tiny",
        pdfPage(kBox, "/Pattern cs /P0 scn 0 0 144 108 re f", "<< /Pattern << /P0 5 0 R >> >>",
                {stream("/Type /Pattern /PatternType 1 /PaintType 1 /TilingType 1 /BBox [0 0 "
                        "1e-6 1e-6] /XStep 1e-6 /YStep 1e-6 /Resources << >>",
                        "0 0 1e-6 1e-6 re f")}));
    add("pdf-recursion", "pdf-type3-glyph-uses-itself",
        pdfPage(kBox, "BT /F0 12 Tf 10 10 Td (a) Tj ET", "<< /Font << /F0 5 0 R >> >>",
                {"<< /Type /Font /Subtype /Type3 /FontBBox [0 0 1 1] /FontMatrix [0.001 0 0 "
                 "0.001 0 0] /CharProcs << /a 6 0 R >> /Encoding << /Differences [97 /a] >> "
                 "/FirstChar 97 /LastChar 97 /Widths [1000] /Resources << /Font << /F0 5 0 R "
                 ">> >> >>",
                 stream("", "1000 0 d0 BT /F0 12 Tf (a) Tj ET")}));
    add("pdf-recursion", "pdf-nested-arrays-100000",
        pdfPage(QByteArray("[").repeated(100000) + QByteArray("]").repeated(100000), ""));
    add("pdf-recursion", "pdf-content-100000-saves",
        pdfPage(kBox, QByteArray("q ").repeated(100000) + "0 0 9 9 re f"));
    add("pdf-recursion", "pdf-indirect-length-loop",
        pdfDocument({"<< /Type /Catalog /Pages 2 0 R >>",
                     "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
                     "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 9 9] /Contents 4 0 R >>",
                     "<< /Length 4 0 R >>\nstream\n0 0 9 9 re f\nendstream"}));

    // Content that inflates to hundreds of megabytes or draws for a long time.
    add("bomb", "pdf-content-inflates-to-256mb",
        pdfDocument({"<< /Type /Catalog /Pages 2 0 R >>",
                     "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
                     "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 144 108] /Contents 4 0 R >>",
                     stream("/Filter /FlateDecode", zlibStream(QByteArray(256 << 20, ' ')))}));
    QByteArray paths;
    for (int i = 0; i < 30000; ++i)
        paths += "0 0 144 108 re f ";
    add("bomb", "pdf-30000-full-page-fills",
        pdfPage(kBox, "/GS0 gs 0.5 g " + paths,
                "<< /ExtGState << /GS0 << /ca 0.5 /BM /Multiply >> >> >>"));
    add("bomb", "pdf-stroke-dash-billion",
        pdfPage(kBox, "[0.0001 0.0001] 0 d 0 0 m 144 108 l 0 144 l S"));
    add("bomb", "pdf-shading-huge-domain",
        pdfPage(kBox, "/Sh0 sh", "<< /Shading << /Sh0 5 0 R >> >>",
                {"<< /ShadingType 2 /ColorSpace /DeviceRGB /Coords [0 0 1e30 1e30] /Domain [0 "
                 "1e30] /Function << /FunctionType 2 /Domain [0 1e30] /C0 [0 0 0] /C1 [1 1 1] "
                 "/N 1e30 >> >>"}));

    // Streams whose length lies, an unknown encryption, random objects.
    add("broken-structure", "pdf-stream-length-1e9",
        pdfDocument({"<< /Type /Catalog /Pages 2 0 R >>",
                     "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
                     "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 9 9] /Contents 4 0 R >>",
                     "<< /Length 1000000000 >>\nstream\n0 0 9 9 re f\nendstream"}));
    QByteArray encrypted = pdfPage(kBox, "0 0 9 9 re f");
    encrypted.replace("/Root 1 0 R", "/Root 1 0 R /Encrypt << /Filter /NoSuch /V 99 /R 99 >>");
    add("broken-structure", "pdf-unknown-encryption", encrypted);
    add("broken-structure", "pdf-header-then-random", "%PDF-1.7\n" + randomBytes(20000, 156));
    add("broken-structure", "pdf-junk-before-header",
        randomBytes(900, 157) + pdfPage(kBox, "0 0 9 9 re f"));
    add("broken-structure", "pdf-no-pages",
        pdfDocument({"<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [] /Count 0 >>"}));
}

} // namespace HostileCorpus
