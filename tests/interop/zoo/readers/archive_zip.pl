# SPDX-License-Identifier: MIT
# Perl's Archive::Zip. The protocol is that of protocol.py.
use strict;
use warnings;
use Archive::Zip qw(:ERROR_CODES);
use Digest::SHA qw(sha256_hex);

$| = 1;
Archive::Zip::setErrorHandler(sub { });
binmode(STDOUT);

sub items {
  my ($path) = @_;
  my $archive = Archive::Zip->new();
  $archive->read($path) == AZ_OK or die "it cannot be opened\n";
  my @lines;
  for my $member ($archive->members()) {
    my ($name, $mode) = ($member->fileName(), $member->unixFileAttributes());
    utf8::encode($name) if utf8::is_utf8($name);
    my ($content, $status) = $member->contents();
    $status == AZ_OK or die "an item cannot be read\n";
    if ($member->isSymbolicLink()) {
      push @lines, "l " . unpack("H*", $name);
    } elsif ($member->isDirectory()) {
      push @lines, "d " . unpack("H*", $name);
    } else {
      push @lines, join(" ", "f", unpack("H*", $name), length($content), sha256_hex($content));
    }
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
