# SPDX-License-Identifier: MIT
# Perl's IO::Uncompress::Unzip, which reads a package from its beginning to its end. The protocol is
# that of protocol.py.
use strict;
use warnings;
use Digest::SHA qw(sha256_hex);
use IO::Uncompress::Unzip qw($UnzipError);

$| = 1;
binmode(STDOUT);

sub items {
  my ($path) = @_;
  my $archive = IO::Uncompress::Unzip->new($path, Strict => 1, Transparent => 0)
    or die "it cannot be opened\n";
  my @lines;
  my $status = 1;
  while ($status > 0) {
    my ($content, $piece) = ("", "");
    my $name = $archive->getHeaderInfo()->{Name};
    utf8::encode($name) if utf8::is_utf8($name);
    while (($status = $archive->read($piece)) > 0) { $content .= $piece; }
    die "an item cannot be read: $UnzipError\n" if $status < 0;
    if ($name =~ m{/$} && $content eq "") {
      push @lines, "d " . unpack("H*", $name);
    } else {
      push @lines, join(" ", "f", unpack("H*", $name), length($content), sha256_hex($content));
    }
    $status = $archive->nextStream();
    die "an item cannot be found: $UnzipError\n" if $status < 0;
  }
  return @lines;
}

while (my $path = <STDIN>) {
  chomp $path;
  my @lines = eval { local $SIG{__WARN__} = sub { }; items($path) };
  my $fault = $@;
  $fault =~ s/[^ -~]/ /g;
  print join("\n", "= $path", @lines, $fault eq "" ? "." : "! $fault"), "\n";
}
