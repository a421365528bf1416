"""Bodies in which the demultiplexer finds nothing to play."""

from support.case import EndToEndCase

_PACKET = 188
_SYNC_BYTE = 0x47
_REFUSED = "The packet isn't TS packet"


def with_a_last_packet_that_is_refused(body):
    """Appends a bad packet, so that a line is printed once the parser has reached the end of the body."""
    return body + bytes(-len(body) % _PACKET) + bytes(_PACKET)


class NoStreamCase(EndToEndCase):
    """Only silence ends these runs, because the lines about packets are not flushed before the stop.
    Afterwards they show that the parser had reached the end."""

    def assert_each_packet_is_refused(self, run, body):
        """Expects a line for each packet without a sync byte, and no frame."""
        whole = body[: len(body) // _PACKET * _PACKET]
        refused = sum(byte != _SYNC_BYTE for byte in whole[::_PACKET])
        self.assertGreater(refused, 0)
        self.assertEqual(run.output.count(_REFUSED), refused)
        self.assert_no_frame(run)
