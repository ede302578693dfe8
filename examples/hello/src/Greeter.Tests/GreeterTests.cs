using System;
using NUnit.Framework;

namespace Hello.Tests
{
    [TestFixture]
    public class GreeterTests
    {
        [Test]
        public void GreetsByName()
        {
            Assert.AreEqual("Hello, Ada!", new Greeter().Greet("Ada"));
        }

        [Test]
        public void CarriesTheStampedVersion()
        {
            Version version = typeof(Greeter).Assembly.GetName().Version;
            Assert.AreNotEqual(new Version(0, 0, 0, 0), version);
        }

        [Test]
        public void IsStrongNamed()
        {
            byte[] token = typeof(Greeter).Assembly.GetName().GetPublicKeyToken();
            Assert.IsNotNull(token);
            Assert.AreEqual(8, token.Length);
        }
    }
}
