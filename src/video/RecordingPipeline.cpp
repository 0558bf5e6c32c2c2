#include "RecordingPipeline.h"

#include "H264Level.h"
#include "RgbToI420.h"

using namespace Qt::StringLiterals;

namespace {

// Raw video waits only briefly: the encoder copies frames into its own look-ahead at once.
const auto rawVideoQueue = u"queue max-size-buffers=8 max-size-bytes=0 max-size-time=0"_s;
// Ten seconds: far more than the encoder's delay, so that audio waiting for video never blocks.
const auto deepQueue = u"queue max-size-buffers=0 max-size-bytes=0 max-size-time=10000000000"_s;

QString x11Source(const CaptureRequest& request)
{
    QString source = u"ximagesrc name=%1 use-damage=false show-pointer=%2"_s.arg(
        QString::fromLatin1(RecordingPipeline::videoSource), request.options.cursor ? u"true"_s : u"false"_s);
    const QRect& area = request.area.rect;
    if (request.area.window) {
        source += u" xid=%1"_s.arg(request.area.sourceId);
    } else {
        source += u" startx=%1 starty=%2 endx=%3 endy=%4"_s.arg(area.left())
                      .arg(area.top())
                      .arg(area.left() + area.width() - 1)
                      .arg(area.top() + area.height() - 1);
    }
    return source + u" ! video/x-raw,framerate=%1/1 ! "_s.arg(request.options.fps);
}

// A desktop's stream sends a frame only when the picture changes, at whatever moments it changes:
// the source repeats its last frame after a short quiet, videorate turns what comes into the
// constant rate, repeating frames where the screen stood still, and the capture stretches the first
// and last pictures to the start and the stop. Frames are copied out of the stream's buffers at once, so that
// the desktop never waits for them. A region is the display's stream cut down.
QString pipeWireSource(const CaptureRequest& request)
{
    // The desktop is asked for no more frames than the file takes: copying frames that are then
    // dropped would cost the desktop and this program for nothing.
    QString source = u"pipewiresrc name=%1 do-timestamp=true always-copy=true keepalive-time=%2"
                     u" ! video/x-raw,max-framerate=%3/1 ! videorate ! video/x-raw,framerate=%3/1 ! "_s
                         .arg(QString::fromLatin1(RecordingPipeline::videoSource))
                         .arg(RecordingPipeline::keepAliveMs)
                         .arg(request.options.fps);
    const QRect& rect = request.area.rect;
    const QRect& bounds = request.area.bounds;
    if (!request.area.window && rect != bounds) {
        source += u"videocrop left=%1 top=%2 right=%3 bottom=%4 ! "_s.arg(rect.left() - bounds.left())
                      .arg(rect.top() - bounds.top())
                      .arg(bounds.right() - rect.right())
                      .arg(bounds.bottom() - rect.bottom());
    }
    return source;
}

// AAC at 128 kbit/s with FFmpeg's fast coder: at this rate it is as good as the default two-loop
// search and takes about half the time. The sound is read in pieces of 40 ms with half a second in
// reserve: a sound server without real-time scheduling (PipeWire's, on a busy machine) loses
// nothing when the program is late for a moment.
QString audioBranch(int index)
{
    return u" pulsesrc name=%1 provide-clock=false client-name=Vexet buffer-time=500000 latency-time=40000"
           u" ! audio/x-raw,rate=48000,channels=2 ! audiorate ! "_s.arg(RecordingPipeline::audioSource(index))
        + deepQueue + u" ! audioconvert ! avenc_aac bitrate=128000 aac-coder=fast ! aacparse ! "_s + deepQueue
        + u" ! %1."_s.arg(QString::fromLatin1(RecordingPipeline::muxer));
}

} // namespace

QString RecordingPipeline::pictures(const CaptureRequest& request)
{
    const QString source = request.area.stream.kind == CaptureStream::Kind::pipeWire ? pipeWireSource(request)
                                                                                     : x11Source(request);
    return source + rawVideoQueue + u" ! "_s + conversion(request);
}

QString RecordingPipeline::conversion(const CaptureRequest& request)
{
    // Pictures of the recording's size in the screen's own pixel format pass videoconvertscale
    // untouched; it only scales a window that changed size, or turns a desktop's other formats into
    // BGRx. The colour conversion is libyuv's (RgbToI420), in a fifth of videoconvertscale's time:
    // done by videoconvertscale, it was a fifth of all a recording's work. Each colour sample is the
    // mean of its 2 × 2 pixels, and x264enc writes that siting into the file: sited left of them, as
    // GStreamer does for HD pictures unless told, every sharp colour edge is spread over a blended
    // sample whose value depends on where the edge falls, and moving screen content costs up to two
    // fifths more bytes at a lower quality. libyuv converts with BT.601's matrix only, at any picture
    // size, and the file says so for players to follow.
    return u"videoconvertscale add-borders=true ! video/x-raw,format=(string){BGRx,BGRA},width=%1,height=%2,"
           u"pixel-aspect-ratio=1/1 ! %3 ! "_s.arg(request.frameSize.width)
               .arg(request.frameSize.height)
               .arg(QString::fromLatin1(RgbToI420::elementName));
}

QString RecordingPipeline::encoder(const CaptureRequest& request)
{
    const int fps = request.options.fps;
    // Constant quality (CRF 23, x264's own default) with no bit-rate bound: x264enc bounds constant
    // quality by its bitrate property unless its VBV buffer is empty, and x264 under any bound spends
    // its bits otherwise: on flat screen content an eighth to a third more bytes for the same
    // pictures, on grainy content fewer at a lower quality (bench/encoder.sh). The level asked of the
    // encoder fits the picture size and rate and is written into the file, so that players know they
    // can play it.
    //
    // A key frame every eight seconds, about as often as x264's own default of 250 frames at 30 fps:
    // screen content changes little between frames and every key frame costs as much as many others.
    // Seeking decodes at most eight seconds forward, and a killed recording plays from its start
    // whatever the interval, since its fragments need no key frames of their own. Up to three
    // B-frames, where x264 finds them worth it, and one reference frame, as the speed preset has
    // them: on screen content the B-frames buy about two thirds of a decibel of SSIM for a fiftieth
    // more bytes at 30 fps, and fewer bytes at a better SSIM at 60, for a fifth to a third more of
    // the encoder's time; a second reference frame costs a tenth more of it for no measurable gain
    // (bench/encoder.sh). The B-frames' reordering delay is taken back when the recording is
    // finished (see describe()). Motion is searched in a hexagon rather than the preset's diamond:
    // a twentieth fewer bytes on sharp moving edges, a hundredth on the desktop, for a fiftieth
    // more of the encoder's time.
    return u"x264enc speed-preset=%1 pass=qual quantizer=23 vbv-buf-capacity=0 key-int-max=%2 ref=1 bframes=3"
           u" me=hex aud=false ! video/x-h264,level=(string)%3 ! h264parse"_s.arg(request.speedPreset)
               .arg(keyFrameSeconds * fps)
               .arg(H264Level::forFrames(request.frameSize.width, request.frameSize.height, fps));
}

QString RecordingPipeline::audioSource(int index)
{
    return u"audio_source%1"_s.arg(index);
}

QList<bool> RecordingPipeline::audioTracks(const VideoOptions& options)
{
    QList<bool> tracks;
    if (options.systemAudio)
        tracks.append(true);
    if (options.microphone)
        tracks.append(false);
    return tracks;
}

QString RecordingPipeline::describe(const CaptureRequest& request)
{
    // Faststart stays off: the header is written first anyway, and fragments follow as they come.
    QString description = u"mp4mux name=%1 fragment-duration=1000 faststart=false"
                          u" ! filesink name=%2 buffer-mode=unbuffered async=false "_s.arg(
                              QString::fromLatin1(muxer), QString::fromLatin1(fileSink))
        + pictures(request) + encoder(request) + u" ! "_s + deepQueue
        + u" ! %1."_s.arg(QString::fromLatin1(muxer));
    const qsizetype tracks = audioTracks(request.options).size();
    for (int i = 0; i < tracks; ++i)
        description += audioBranch(i);
    return description;
}
