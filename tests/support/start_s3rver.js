// Starts the installed S3 server on a free loopback port, says which, and ends with its
// standard input:
// node --openssl-legacy-provider start_s3rver.js PACKAGE_DIRECTORY DATA_DIRECTORY BUCKET
// It makes its list tokens with a cipher of that provider.
'use strict';

const [packageDirectory, directory, bucket] = process.argv.slice(2);
const S3rver = require(packageDirectory);

new S3rver({
  address: '127.0.0.1',
  port: 0,
  directory,
  silent: true,
  vhostBuckets: false,
  configureBuckets: [{ name: bucket, configs: [] }],
})
  .run()
  .then(({ port }) => console.log(`listening on 127.0.0.1:${port}`));

process.stdin.resume().on('end', () => process.exit()).on('error', () => process.exit());
