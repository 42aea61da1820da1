"""Tables of medians, the ratios to our own recorder, and whether the goals are met."""

import dataclasses
from statistics import median

from .recorders import OWN

MILLI = 1000
MEGA = 1e6


@dataclasses.dataclass
class Round:
    runs: dict  # recorder to Run
    idle: object  # Load
    encoding: object  # Encoding
    open_encoder: int  # bytes

    def server_cpu(self, recorder):
        """What the recorder adds to the servers' work: CPU seconds, a second."""
        return self.runs[recorder].server.cpu - self.idle.cpu

    def cpu(self, recorder):
        return self.runs[recorder].client_cpu + self.server_cpu(recorder)

    def own(self, extension):
        return next(r for r in self.runs if r.name == OWN and r.extension == extension)


def _row(cells):
    return "| " + " | ".join(cells) + " |"


def _milli(values):
    return f"{median(values) * MILLI:.2f}"


def _fidelity(rounds, recorder):
    found = [one.runs[recorder].fidelity for one in rounds]
    reported = [one.runs[recorder].reported_lost for one in rounds]
    if recorder.is_wav and all(found):
        text = f"{sum(f.lost for f in found)}"
        added = sum(f.added for f in found)
        if added:
            text += f" (and {added} added)"
    elif recorder.is_wav:
        text = "not measured: not sample-exact"
    else:
        text = "not measured"
    if reported[0] is not None:
        text += f"; {sum(reported)} reported"
    return text


def _cycles(rounds, recorder):
    cycles = [one.runs[recorder].cycles for one in rounds]
    shortest, longest = min(c[0] for c in cycles), max(c[1] for c in cycles)
    return str(shortest) if shortest == longest else f"{shortest} to {longest}"


def _recorder_row(rounds, recorder):
    runs = [one.runs[recorder] for one in rounds]
    ratios = [one.cpu(recorder) / one.cpu(one.own(recorder.extension)) for one in rounds]
    spare = [one.runs[recorder].private_dirty - one.open_encoder for one in rounds]
    wake_ups = [one.runs[recorder].server.wake_ups - one.idle.wake_ups for one in rounds]
    return _row([
        recorder.name, recorder.extension.upper(),
        _milli(run.client_cpu for run in runs),
        _milli(one.server_cpu(recorder) for one in rounds),
        _milli(one.cpu(recorder) for one in rounds),
        f"{median(ratios):.2f}" + (f" ({min(ratios):.2f} to {max(ratios):.2f})"
                                   if recorder.name != OWN else ""),
        f"{median(run.private_dirty for run in runs) / MEGA:.1f}", f"{median(spare) / MEGA:+.1f}",
        f"{median(run.wake_ups for run in runs):.0f}", f"{median(wake_ups):.0f}",
        _cycles(rounds, recorder), _fidelity(rounds, recorder)])


def table(rounds):
    header = ["recorder", "file", "client", "server", "both", f"both ÷ {OWN}", "memory",
              "above encoder", "wake-ups", "server wake-ups", "cycle", "lost frames"]
    rows = [_row(header), _row(["---", "---", *["---:"] * (len(header) - 3), "---"])]
    rows += [_recorder_row(rounds, recorder) for recorder in rounds[0].runs]
    return rows


def baselines(rounds):
    return [
        f"- servers without a recorder: {_milli(r.idle.cpu for r in rounds)} ms of CPU and "
        f"{median(r.idle.wake_ups for r in rounds):.0f} wake-ups a second (subtracted above)",
        f"- encoding the recorded WAV offline: {_milli(r.encoding.encoder for r in rounds)} ms a "
        f"second of audio by the encoder alone, {_milli(r.encoding.ffmpeg for r in rounds)} ms by "
        "`ffmpeg` from WAV to M4A",
        f"- private dirty memory of a program that merely opens the encoder: "
        f"{median(r.open_encoder for r in rounds) / MEGA:.1f} MB",
    ]


def _verdict(is_met):
    return "met" if is_met else "**missed**"


def goals(rounds):
    wav, m4a = rounds[0].own("wav"), rounds[0].own("m4a")
    peers = [r for r in rounds[0].runs if r.is_wav and r.is_peer]
    cheapest = min(peers, key=lambda peer: median(one.cpu(peer) for one in rounds))
    wav_ratio = median(one.cpu(wav) / one.cpu(cheapest) for one in rounds)
    by_encoder = median(one.cpu(m4a) / (one.cpu(wav) + one.encoding.encoder) for one in rounds)
    by_ffmpeg = median(one.cpu(m4a) / (one.cpu(wav) + one.encoding.ffmpeg) for one in rounds)
    memory = max(median(one.runs[own].private_dirty - one.open_encoder for one in rounds) / MEGA
                 for own in (wav, m4a))
    return [
        f"- WAV, client and server, no dearer than any peer: {wav_ratio:.2f} × the cheapest "
        f"({cheapest.name}): {_verdict(wav_ratio <= 1)}",
        f"- M4A within 1.05 × of WAV capture and offline encoding: {by_encoder:.2f} × with the "
        f"encoder alone ({_verdict(by_encoder <= 1.05)}), {by_ffmpeg:.2f} × with `ffmpeg` "
        f"({_verdict(by_ffmpeg <= 1.05)})",
        f"- private dirty memory under 8 MB above a program that merely opens the encoder: "
        f"{memory:.1f} MB: {_verdict(memory < 8)}",
    ]


def markdown(rounds, seconds):
    lines = [f"Medians of {len(rounds)} rounds of {seconds} s. CPU in milliseconds (user and "
             "system) a second of recorded audio; memory in MB; wake-ups a second; cycles and lost "
             "frames in frames, lost ones in all rounds together.", "", *table(rounds), "",
             *baselines(rounds), "", "Goals:", "", *goals(rounds), ""]
    return "\n".join(lines)
